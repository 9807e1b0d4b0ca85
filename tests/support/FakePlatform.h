// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "support/Error.h"
#include "support/FakeInput.h"

#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

/// A platform that records what it was asked and answers what a test has set. All members are public, for the
/// test; what the pipeline thread touches has a lock of its own.
namespace parlivo::fake {

/// One capture; the test sends sound into it through FakeAudioInput.
class Capture;

class AudioInput : public parlivo::AudioInput {
  public:
    std::unique_ptr<AudioCapture> open() override;

    /// Asked instead, if set: a real microphone on an otherwise fake system.
    parlivo::AudioInput* real = nullptr;
    bool present = true;
    AudioFormat format{48'000, 1};
    /// What start() throws, if anything.
    std::optional<Error> startError;
    /// What the source delivers in the moment it is stopped, that is between key-up and the end of the tail.
    std::vector<float> tail;

    /// Sends samples into the running capture, in blocks as the port promises. False if none runs.
    bool speak(const std::vector<float>& interleaved);
    /// The source disappears.
    bool interrupt();
    int opened = 0;
    int running = 0;
    std::optional<Clock::TimePoint> stoppedAt;

  private:
    friend class Capture;
    Capture* current_ = nullptr;
};

class Bundle : public parlivo::Bundle {
  public:
    QString location() const override { return place; }
    std::optional<QString> resource(const QString& name) const override;
    std::optional<QString> shortVersion() const override { return version; }

    QString place;
    std::map<QString, QString> resources;
    std::optional<QString> version = QStringLiteral("1.2.3");
};

/// Does nothing and reports success, or what a real adapter reports.
class BundleTools : public parlivo::BundleTools {
  public:
    std::optional<QString> stagingPlace(const QString& bundle) const override {
        return real ? real->stagingPlace(bundle) : std::nullopt;
    }
    Outcome unpack(const QString& archive, const QString& folder, qint64 maximumSize) override {
        return real ? real->unpack(archive, folder, maximumSize) : Outcome::Done;
    }
    std::optional<QString> shortVersion(const QString& bundle) const override {
        return real ? real->shortVersion(bundle) : std::nullopt;
    }
    Replacement replace(const QString& source, const QString& destination) override {
        return real ? real->replace(source, destination) : Replacement::Done;
    }
    void startAfterEnd(const QString& bundle) override { started.append(bundle); }

    /// Asked instead, if set.
    parlivo::BundleTools* real = nullptr;
    QStringList started;
};

/// One temporary folder per process holds everything, since some paths are computed once per process.
class Directories : public parlivo::Directories {
  public:
    QString applicationSupport() const override { return root() + QStringLiteral("/support"); }
    QString logs() const override { return root() + QStringLiteral("/logs"); }
    QString home() const override { return root() + QStringLiteral("/home"); }
    QString temporary() const override { return temporaryDir.path(); }
    static QString root();

    /// Fresh for each test.
    QTemporaryDir temporaryDir;
};

/// Succeeds until a test makes it fail.
class LoginItem : public parlivo::LoginItem {
  public:
    bool isEnabled() override { return enabled; }
    void setEnabled(bool wanted) override {
        calls.append(wanted ? QStringLiteral("register") : QStringLiteral("unregister"));
        if (error) throw Error(*error);
        enabled = wanted;
    }

    bool enabled = false;
    std::optional<Error> error;
    QStringList calls;
};

/// Shows nothing and records what it was to show.
class Notifications : public parlivo::Notifications {
  public:
    void show(Notification notification) override {
        texts.append(notification.text);
        last = std::move(notification);
    }
    void withdraw() override {
        ++withdrawals;
        last.reset();
    }
    /// The user presses the button of the one that is shown.
    void choose() const {
        const auto chosen = last.value().onAction;
        chosen();
    }

    QStringList texts;
    std::optional<Notification> last;  ///< the one that is shown
    int withdrawals = 0;
};

class Permissions : public parlivo::Permissions {
  public:
    MicrophoneStatus microphone() override {
        ++microphoneQuestions;
        return microphoneStatus;
    }
    void observeMicrophone(const QObject* owner, std::function<void(MicrophoneStatus)> changed) override;
    void requestMicrophone(MicrophoneCheck check, Answer answer) override;
    bool accessibilityTrusted(Prompt prompt) override;

    MicrophoneStatus microphoneStatus = MicrophoneStatus::Authorised;
    std::atomic<bool> trusted = true;
    std::atomic<int> prompts = 0;
    int microphoneQuestions = 0;
    std::vector<MicrophoneCheck> microphoneRequests;

    /// The system's answer comes, or changes.
    void setMicrophone(MicrophoneStatus status);

  private:
    std::vector<std::pair<QPointer<const QObject>, std::function<void(MicrophoneStatus)>>> observers_;
};

class RemoteControl : public parlivo::RemoteControl {
  public:
    Instance registerInstance() override { return answer; }
    void serve(RemoteTarget served) override { target = std::move(served); }
    void announceState(const QString& state) override {
        announced.append(state);
        if (onAnnounced) onAnnounced(state);
    }
    Delivery send(RemoteCommand command) override;
    QString whyUnavailable() const override { return QStringLiteral("finto"); }

    Instance answer = Instance::Only;
    RemoteTarget target;
    QStringList announced;
    std::function<void(const QString& state)> onAnnounced;
    std::vector<RemoteCommand> sent;
};

/// Shows nothing and counts what it received.
class FloatingPanel : public parlivo::FloatingPanel {
  public:
    void show() override {
        ++shown;
        visible = true;
    }
    void hide() override { visible = false; }
    bool isVisible() const override { return visible; }
    Canvas canvas() const override { return wanted; }
    void present(const QImage& frame) override {
        ++frames;
        last = frame.copy();
    }

    Canvas wanted;
    bool visible = false;
    int shown = 0;
    int frames = 0;
    QImage last;
};

class FloatingPanels : public parlivo::FloatingPanels {
  public:
    std::unique_ptr<parlivo::FloatingPanel> makePanel(const PanelPlacing& newPlacing) override;

    bool possible = true;
    int made = 0;
    PanelPlacing placing;            ///< of the last panel made
    FloatingPanel* panel = nullptr;  ///< the last one made
};

class Sounds : public parlivo::Sounds {
  public:
    void play(const QString& name) override { played.append(name); }
    QStringList played;
};

/// No tray at first; the test adds and removes it.
class StatusItems : public parlivo::StatusItemHost {
  public:
    void watch(Observer newObserver) override;
    StatusItemPlace::Foreground foregroundAt(const QRect&) override { return seen; }
    void report(const std::optional<StatusItemPlace>& newPlace);

    StatusItemPlace::Foreground seen = StatusItemPlace::Foreground::Unknown;

    std::optional<StatusItemPlace> place;
    Observer observer;
};

class SystemLog : public parlivo::SystemLog {
  public:
    void write(const QString& message) override;
    QStringList lines() const;

  private:
    mutable std::mutex mutex_;
    QStringList lines_;  // under mutex_
};

class SystemVersion : public parlivo::SystemVersion {
  public:
    QString description() override { return QStringLiteral("Version 14.5 (Build 23F79)"); }
};

class UserDefaults : public parlivo::UserDefaults {
  public:
    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    void flush() override { ++flushes; }

    std::atomic<int> flushes = 0;

  private:
    mutable std::mutex mutex_;
    std::map<QString, QVariant> values_;  // under mutex_
};

/// Writes a small WAV, or fails as told. Converts only whole files, unless it has a real one to ask.
class WavConverter : public parlivo::WavConverter {
  public:
    void convert(const QString& source, const QString& destination) override;
    std::unique_ptr<WavStream> convertWhileRecording(const AudioFormat& format,
                                                     const QString& destination) override {
        return real ? real->convertWhileRecording(format, destination) : nullptr;
    }

    /// Asked instead, if set.
    parlivo::WavConverter* real = nullptr;
    std::optional<Error> error;
    QStringList converted;
};

class Workspace : public parlivo::Workspace {
  public:
    void open(const QUrl& url) override { opened.append(url.toString()); }
    void openPrivacyPane(PrivacyPane pane) override { panes.push_back(pane); }

    QStringList opened;
    std::vector<PrivacyPane> panes;
};

}  // namespace parlivo::fake

namespace parlivo {

class FakePlatform : public Platform {
  public:
    /// Installs a new fake and returns it; it is used until the next one is installed or until `uninstall`.
    static FakePlatform& install();
    static void uninstall();

    fake::AudioInput& audioInput() override { return audioInput_; }
    fake::Bundle& bundle() override { return bundle_; }
    fake::BundleTools& bundleTools() override { return bundleTools_; }
    fake::Directories& directories() override { return directories_; }
    fake::FloatingPanels& floatingPanels() override { return floatingPanels_; }
    fake::HotKeys& hotKeys() override { return hotKeys_; }
    fake::Keyboard& keyboard() override { return keyboard_; }
    fake::LoginItem& loginItem() override { return loginItem_; }
    fake::Notifications& notifications() override { return notifications_; }
    fake::Pasteboard& pasteboard() override { return pasteboard_; }
    fake::Permissions& permissions() override { return permissions_; }
    fake::RemoteControl& remoteControl() override { return remoteControl_; }
    fake::Sounds& sounds() override { return sounds_; }
    fake::StatusItems& statusItems() override { return statusItems_; }
    fake::SystemLog& systemLog() override { return systemLog_; }
    fake::SystemVersion& systemVersion() override { return systemVersion_; }
    fake::UserDefaults& userDefaults() override { return userDefaults_; }
    fake::WavConverter& wavConverter() override { return wavConverter_; }
    fake::Workspace& workspace() override { return workspace_; }
    std::optional<QString> startProblem() override { return std::nullopt; }
    QString desktopSummary() override { return QStringLiteral("finto"); }
    std::vector<SessionHint> sessionHints() override { return hints; }
    std::function<void()> childSetup() override { return {}; }
    QProcessEnvironment childEnvironment() override {
        return QProcessEnvironment(QProcessEnvironment::InheritFromParent);
    }
    void onTerminationRequest(std::function<void()> requested) override {
        terminationRequested = std::move(requested);
    }
    void onDisplayLoss(std::function<void()>) override {}

    std::function<void()> terminationRequested;
    std::vector<SessionHint> hints;

  private:
    fake::AudioInput audioInput_;
    fake::Bundle bundle_;
    fake::BundleTools bundleTools_;
    fake::Directories directories_;
    fake::FloatingPanels floatingPanels_;
    fake::HotKeys hotKeys_;
    fake::Keyboard keyboard_;
    fake::LoginItem loginItem_;
    fake::Notifications notifications_;
    fake::Pasteboard pasteboard_;
    fake::Permissions permissions_;
    fake::RemoteControl remoteControl_;
    fake::Sounds sounds_;
    fake::StatusItems statusItems_;
    fake::SystemLog systemLog_;
    fake::SystemVersion systemVersion_;
    fake::UserDefaults userDefaults_;
    fake::WavConverter wavConverter_;
    fake::Workspace workspace_;
};

}  // namespace parlivo
