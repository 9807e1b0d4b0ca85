// SPDX-License-Identifier: MIT
#include "platform/linux/x11/QtPasteboard.h"

#include "platform/linux/x11/SelectionReader.h"
#include "support/MainQueue.h"

#include <QGuiApplication>

#include <algorithm>
#include <memory>

namespace parlivo {

namespace {

using namespace std::chrono_literals;

constexpr auto ownerTimeout = 1000ms;

QClipboard::Mode mode(PasteboardPlace place) {
    return place == PasteboardPlace::Clipboard ? QClipboard::Clipboard : QClipboard::Selection;
}

/// A Wayland compositor ignores a program without the focus and does not tell it so; the toolkit's other ways
/// have no clipboard but this program's.
bool reachesOthers() {
    const QString way = QGuiApplication::platformName();
    return way == QLatin1String("xcb") ||
           (way.startsWith(QLatin1String("wayland")) && QGuiApplication::focusWindow());
}

/// What Klipper and most other clipboard managers leave out of their history.
void markAsSecret(QMimeData& data) {
    data.setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
}

}  // namespace

/// A text that counts how often it is asked for.
class QtPasteboard::Content : public QMimeData {
  public:
    explicit Content(std::atomic<int>& givenCount) : givenCount_(givenCount) {}

  protected:
    QVariant retrieveData(const QString& type, QMetaType wanted) const override {
        if (type.startsWith(QLatin1String("text/plain"))) ++givenCount_;
        return QMimeData::retrieveData(type, wanted);
    }

  private:
    std::atomic<int>& givenCount_;
};

PasteboardTexts QtPasteboard::texts() {
    PasteboardTexts texts;
    QList<PasteboardPlace> others;
    // Qt is asked only for what this program put there: it notices a new owner late, and would wait for that
    // one's contents on the main thread.
    const bool alive = MainQueue::sync([&] {
        for (const PasteboardPlace place : places_) {
            if (isOurs(place)) {
                texts.insert(place, put_.at(place)->text());
            } else {
                others.append(place);
            }
        }
    });
    if (!alive || others.isEmpty()) return texts;
    if (const auto reader = x11::SelectionReader::open()) texts.insert(reader->read(others, ownerTimeout));
    return texts;
}

bool QtPasteboard::setText(const QString& text, History history) {
    // Lines end with a line feed in X selections: a terminal takes a carriage return for one more.
    const QString lines = QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    bool taken = false;
    const bool alive = MainQueue::sync([&] {
        for (const PasteboardPlace place : places_) put(place, lines, history);
        taken = reachesOthers() && std::ranges::all_of(places_, [this](auto place) { return isOurs(place); });
    });
    return alive && taken;
}

void QtPasteboard::restore(const PasteboardTexts& texts) {
    MainQueue::sync([&] {
        for (auto entry = texts.begin(); entry != texts.end(); ++entry) {
            // A history has the text from its first stay, unless it was one that no history should have.
            if (isOurs(entry.key())) put(entry.key(), entry.value(), History::Omit);
        }
    });
}

void QtPasteboard::put(PasteboardPlace place, const QString& text, History history) {
    auto data = std::make_unique<Content>(givenCount_);
    data->setText(text);
    if (history == History::Omit) markAsSecret(*data);
    put_[place] = data.get();
    QGuiApplication::clipboard()->setMimeData(data.release(), mode(place));
}

bool QtPasteboard::isOurs(PasteboardPlace place) const {
    const auto last = put_.find(place);
    return last != put_.end() && last->second &&
           QGuiApplication::clipboard()->mimeData(mode(place)) == last->second;
}

}  // namespace parlivo
