// SPDX-License-Identifier: MIT
#pragma once

#include "support/PlatformTest.h"
#include "support/Waiting.h"
#include "ui/ModelFetch.h"
#include "ui/views/Dialogs.h"

#include <QAbstractButton>
#include <QLabel>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Operates windows as a user does: by the text on them.
namespace parlivo {

/// Answers at once what the user would be asked.
class ScriptedDialogs : public Dialogs {
  public:
    int ask(const Alert& alert) override {
        alerts.push_back(alert);
        return answer;
    }
    std::optional<QString> chooseFolder(const QString& startingIn, const QString& prompt) override {
        questions.push_back({startingIn, prompt});
        return folder;
    }

    int answer = 0;
    std::optional<QString> folder;
    std::vector<Alert> alerts;
    struct Question {
        QString startingIn;
        QString prompt;
    };
    std::vector<Question> questions;
};

/// Downloads that progress as the test says. The calls act on the one that was started last.
class ScriptedFetch {
  public:
    ModelFetch fetch() {
        return [this](const ModelCatalog::Entry& entry, FetchObserver observer) {
            started.append(entry.id);
            entry_ = entry;
            observer_ = std::move(observer);
            return std::make_shared<int>(0);
        };
    }

    void progress(double fraction, qint64 written, qint64 total) const {
        const auto tell = observer_.onProgress;
        tell(fraction, written, total);
    }
    void fail(const QString& description) const {
        const auto tell = observer_.onCompletion;
        tell(Error(ErrorCode::IncompleteDownload, description));
    }
    /// The file is there, whole, without taking room on the disk.
    void succeed() const;

    QStringList started;

  private:
    ModelCatalog::Entry entry_;
    FetchObserver observer_;
};

/// A file of that size which takes no room on the disk.
inline void makeSparseFile(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(size)) ADD_FAILURE() << path.toStdString();
}

inline void makeModel(const ModelCatalog::Entry& entry) {
    makeSparseFile(Config::modelsDir() + QLatin1Char('/') + entry.fileName, entry.expectedSize);
}

inline void ScriptedFetch::succeed() const {
    makeModel(entry_);
    const auto tell = observer_.onCompletion;
    tell(std::nullopt);
}

class WindowTest : public PlatformTest {
  protected:
    WindowTest() {
        auto scripted = std::make_unique<ScriptedDialogs>();
        dialogs = scripted.get();
        Dialogs::install(std::move(scripted));
    }
    ~WindowTest() override { Dialogs::install(nullptr); }
    WindowTest(const WindowTest&) = delete;
    WindowTest& operator=(const WindowTest&) = delete;

    /// The visible button, of any kind, with these words; null when there is none.
    static QAbstractButton* button(const QWidget& window, const QString& words) {
        for (auto* found : window.findChildren<QAbstractButton*>()) {
            const bool named = found->text() == words || found->accessibleName() == words;
            if (named && found->isVisible()) return found;
        }
        return nullptr;
    }

    static void click(const QWidget& window, const QString& words) {
        QAbstractButton* found = button(window, words);
        ASSERT_NE(found, nullptr) << "no button " << words.toStdString();
        found->click();
    }

    /// All words that can be seen in labels, in the order of their making.
    static QStringList words(const QWidget& window) {
        QStringList all;
        for (const auto* label : window.findChildren<QLabel*>()) {
            if (label->isVisible() && !label->text().isEmpty()) all.append(label->text());
        }
        return all;
    }

    static bool shows(const QWidget& window, const QString& text) { return words(window).contains(text); }

    ScriptedDialogs* dialogs;
};

}  // namespace parlivo
