// SPDX-License-Identifier: MIT
#include "support/FakePlatform.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <span>
#include <utility>

namespace parlivo::fake {

class Capture : public AudioCapture {
  public:
    explicit Capture(AudioInput& input) : input_(input) {}
    ~Capture() override { finish(); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    AudioFormat format() const override { return input_.format; }

    void start(Tap tap, Interruption interruption) override {
        if (input_.startError) throw Error(*input_.startError);
        tap_ = std::move(tap);
        interruption_ = std::move(interruption);
        input_.current_ = this;
        ++input_.running;
    }

    void stop(Clock::TimePoint end) override {
        input_.stoppedAt = end;
        if (!input_.tail.empty()) deliver(input_.tail);
        finish();
    }

    void deliver(const std::vector<float>& samples) const {
        const auto channels = static_cast<std::size_t>(input_.format.channels);
        const std::size_t frames = samples.size() / channels;
        for (std::size_t at = 0; at < frames; at += blockFrames) {
            const std::size_t count = std::min(blockFrames, frames - at);
            tap_(std::span(samples).subspan(at * channels, count * channels), count);
        }
    }

    void interrupt() {
        const Interruption interruption = std::move(interruption_);
        finish();
        interruption();
    }

  private:
    void finish() {
        if (input_.current_ != this) return;
        input_.current_ = nullptr;
        --input_.running;
    }

    AudioInput& input_;
    Tap tap_;
    Interruption interruption_;
};

std::unique_ptr<AudioCapture> AudioInput::open() {
    ++opened;
    if (real) return real->open();
    if (!present) return nullptr;
    return std::make_unique<Capture>(*this);
}

bool AudioInput::speak(const std::vector<float>& interleaved) {
    if (!current_) return false;
    current_->deliver(interleaved);
    return true;
}

bool AudioInput::interrupt() {
    if (!current_) return false;
    current_->interrupt();
    return true;
}

std::optional<QString> Bundle::resource(const QString& name) const {
    const auto found = resources.find(name);
    if (found == resources.end()) return std::nullopt;
    return found->second;
}

QString Directories::root() {
    static const QTemporaryDir dir;
    return dir.path();
}

namespace {

template <typename Port>
class AtEnd : public Port {
  public:
    explicit AtEnd(std::function<void()> job) : job_(std::move(job)) {}
    ~AtEnd() override { job_(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

  private:
    std::function<void()> job_;
};

class Source : public KeyEventSource {
  public:
    explicit Source(Keyboard& keyboard) : keyboard_(keyboard) {
        ++keyboard_.sourcesMade;
        ++keyboard_.sourcesAlive;
    }
    ~Source() override { --keyboard_.sourcesAlive; }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    TextIntake intake() const override { return keyboard_.intake; }
    Posted postKey(KeyCode key, KeyFlags flags) override {
        return post(QStringLiteral("key %1 %2").arg(key).arg(flags));
    }
    Posted postCharacter(QStringView character) override {
        if (character.startsWith(QChar(keyboard_.skipped))) return Posted::Skipped;
        return post(QStringLiteral("«%1»").arg(character));
    }
    Posted postPiece(QStringView piece) override { return post(QStringLiteral("«%1»").arg(piece)); }

  private:
    Posted post(const QString& stroke) {
        if (keyboard_.strokes().size() >= keyboard_.failsAfter) return keyboard_.failure;
        keyboard_.record(stroke);
        return Posted::Yes;
    }

    Keyboard& keyboard_;
};

}  // namespace

std::unique_ptr<HotKeyHandler> HotKeys::installHandler(Edge pressedEdge, Edge releasedEdge, Change change) {
    if (real) return real->installHandler(std::move(pressedEdge), std::move(releasedEdge), std::move(change));
    calls.append(QStringLiteral("install"));
    pressed = std::move(pressedEdge);
    released = std::move(releasedEdge);
    changed = std::move(change);
    return std::make_unique<AtEnd<HotKeyHandler>>([this] { calls.append(QStringLiteral("remove")); });
}

HotKeys::Result HotKeys::registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) {
    if (real) return real->registerHotKey(key, modifiers, identity);
    calls.append(QStringLiteral("register %1 %2").arg(key).arg(modifiers));
    if (taken.contains({key, modifiers})) return HotKeyRefusal{10};
    if (refuseWith != 0) return HotKeyRefusal{refuseWith, refusalReason};
    registered.push_back({key, modifiers, identity});
    return std::make_unique<AtEnd<HotKeyRegistration>>([this, key, modifiers] {
        calls.append(QStringLiteral("unregister"));
        registered.erase(std::ranges::find_if(
            registered, [&](const Registered& one) { return one.key == key && one.modifiers == modifiers; }));
    });
}

bool HotKeys::anyMayBeFree(const std::vector<HotKeyCombination>& refused) {
    ++questions;
    return std::ranges::any_of(refused, [this](const auto& one) {
        return !taken.contains({one.key, one.modifiers});
    });
}

std::optional<KeyCode> HotKeys::keyCodeOf(std::uint32_t nativeScanCode) const {
    const auto found = positions.find(nativeScanCode);
    return found == positions.end() ? std::nullopt : std::optional(found->second);
}

void HotKeys::press() const {
    if (!registered.empty()) pressed();
}

void HotKeys::release() const {
    if (!registered.empty()) released();
}

std::unique_ptr<KeyEventSource> Keyboard::makeSource(QStringView text) {
    if (real) return real->makeSource(text);
    if (!canType) return nullptr;
    return std::make_unique<Source>(*this);
}

std::unique_ptr<KeyEventSource> Keyboard::makeShortcutSource() {
    if (real) return real->makeShortcutSource();
    if (!canSendShortcuts) return nullptr;
    return std::make_unique<Source>(*this);
}

void Keyboard::record(const QString& stroke) {
    if (beforeStroke) beforeStroke();
    const std::lock_guard lock(mutex_);
    strokes_.append(stroke);
}

QStringList Keyboard::strokes() const {
    const std::lock_guard lock(mutex_);
    return strokes_;
}

QString Keyboard::typed() const {
    QString text;
    const QStringList all = strokes();
    for (const QString& stroke : all) {
        if (stroke == QLatin1String("key 36 0")) {
            text += QLatin1Char('\n');
        } else if (stroke == QLatin1String("key 48 0")) {
            text += QLatin1Char('\t');
        } else if (stroke.startsWith(QChar(u'«'))) {
            text += QStringView(stroke).sliced(1).chopped(1);
        }
    }
    return text;
}

PasteboardTexts Pasteboard::texts() {
    if (real) return real->texts();
    const std::lock_guard lock(mutex_);
    return contents_;
}

bool Pasteboard::setText(const QString& text, History history) {
    if (real) return real->setText(text, history);
    if (refuses) return false;
    const std::lock_guard lock(mutex_);
    QString held = text;
    if (convertsLineEnds) held.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    contents_ = {{PasteboardPlace::Clipboard, held}, {PasteboardPlace::PrimarySelection, held}};
    ours_ = true;
    sets_.push_back({text, history});
    return true;
}

void Pasteboard::restore(const PasteboardTexts& texts) {
    if (real) return real->restore(texts);
    const std::lock_guard lock(mutex_);
    ++restores_;
    if (!ours_) return;
    for (auto entry = texts.begin(); entry != texts.end(); ++entry) contents_[entry.key()] = entry.value();
}

void Pasteboard::selectionTaken(const PasteboardTexts& texts) {
    const std::lock_guard lock(mutex_);
    contents_ = texts;
    ours_ = false;
}

std::vector<Pasteboard::Set> Pasteboard::sets() const {
    const std::lock_guard lock(mutex_);
    return sets_;
}

int Pasteboard::restores() const {
    const std::lock_guard lock(mutex_);
    return restores_;
}

void Permissions::observeMicrophone(const QObject* owner, std::function<void(MicrophoneStatus)> changed) {
    observers_.emplace_back(owner, std::move(changed));
}

void Permissions::setMicrophone(MicrophoneStatus status) {
    microphoneStatus = status;
    for (const auto& [owner, changed] : observers_)
        if (owner) changed(status);
}

void Permissions::requestMicrophone(MicrophoneCheck check, Answer answer) {
    microphoneRequests.push_back(check);
    answer(microphoneStatus == MicrophoneStatus::Authorised);
}

bool Permissions::accessibilityTrusted(Prompt prompt) {
    if (prompt == Prompt::Yes) ++prompts;
    return trusted;
}

RemoteControl::Delivery RemoteControl::send(RemoteCommand command) {
    sent.push_back(command);
    return Delivery::Done;
}

std::unique_ptr<parlivo::FloatingPanel> FloatingPanels::makePanel(const PanelPlacing& newPlacing) {
    placing = newPlacing;
    if (!possible) return nullptr;
    ++made;
    auto newPanel = std::make_unique<FloatingPanel>();
    panel = newPanel.get();
    return newPanel;
}

void StatusItems::watch(Observer newObserver) {
    observer = std::move(newObserver);
    if (observer) observer(place);
}

void StatusItems::report(const std::optional<StatusItemPlace>& newPlace) {
    place = newPlace;
    if (observer) observer(place);
}

void SystemLog::write(const QString& message) {
    const std::lock_guard lock(mutex_);
    lines_.append(message);
}

QStringList SystemLog::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

QVariant UserDefaults::value(const QString& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(key);
    return found == values_.end() ? QVariant() : found->second;
}

void UserDefaults::setValue(const QString& key, const QVariant& value) {
    const std::lock_guard lock(mutex_);
    values_[key] = value;
}

void UserDefaults::remove(const QString& key) {
    const std::lock_guard lock(mutex_);
    values_.erase(key);
}

void WavConverter::convert(const QString& source, const QString& destination) {
    if (real) return real->convert(source, destination);
    converted.append(source);
    if (error) throw Error(*error);
    QFile wav(destination);
    if (!wav.open(QIODevice::WriteOnly)) throw Error::system(EIO, destination);
    wav.write("RIFF");
}

}  // namespace parlivo::fake

namespace parlivo {

FakePlatform& FakePlatform::install() {
    auto platform = std::make_unique<FakePlatform>();
    FakePlatform& installed = *platform;
    Platform::install(std::move(platform));
    return installed;
}

void FakePlatform::uninstall() {
    Platform::install(nullptr);
}

}  // namespace parlivo
