// SPDX-License-Identifier: MIT
#pragma once

#include "app/AppDelegate.h"
#include "settings/Config.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/PlatformTest.h"

#include <QCoreApplication>
#include <QDir>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace parlivo {

/// The controller on the fake platform, with engines that answer as a test says. Transcription waits for
/// `answer`, so that a test can look at the states between.
class AppDelegateTest : public PlatformTest {
  protected:
    using Strings = QStringList;
    static QString line(const char16_t* text) { return QStringView(text).toString(); }

    AppDelegateTest() {
        store(Settings::onboardingDone, true);
        platform.bundle().resources[QStringLiteral("ggml-model.bin")] = QStringLiteral("/proc/self/exe");
    }

    ~AppDelegateTest() override {
        answered_.raise();
        delegate.reset();
    }

    AppDelegate& launch() {
        delegate = std::make_unique<AppDelegate>(collaborators(), [this] { return now_; });
        delegate->applicationDidFinishLaunching();
        return *delegate;
    }

    Collaborators collaborators() {
        Collaborators fake;
        const auto note = [this](const char* what) {
            return [this, what] { record(QString::fromLatin1(what)); };
        };
        fake.ensureTranscriber = note("ensureTranscriber");
        fake.ensureCleaner = note("ensureCleaner");
        fake.convert = [this](const QString& recording) { return convert(recording); };
        fake.transcribe = [this](const QString& wav) { return transcribe(wav); };
        fake.clean = [this](const QString& raw) { return raw + suffix; };
        fake.typeText = [this](const QString& text) {
            record(QStringLiteral("type ") + text);
            return injection.load();
        };
        fake.paste = [this](const QString& text) {
            record(QStringLiteral("paste ") + text);
            return injection.load();
        };
        fake.stopEngines = note("stopEngines");
        fake.showOnboarding = [this](Collaborators::FirstRun firstRun) {
            record(QStringLiteral("onboarding"));
            onboardingFinished = std::move(firstRun.onFinished);
            onboardingPutOff = std::move(firstRun.onPutOff);
        };
        fake.resumeOnboarding = [this] {
            record(QStringLiteral("resume"));
            return std::exchange(putOff, false);
        };
        fake.startUpdater = [this](std::function<void()> onStateChange) {
            record(QStringLiteral("updater"));
            updaterChanged = std::move(onStateChange);
        };
        fake.availableVersion = [this] { return available; };
        fake.installingVersion = [this] { return installing; };
        fake.promptAndInstall = note("install");
        fake.showWhatsNew = [this] {
            record(QStringLiteral("whatsNew"));
            hotKeysAtWhatsNew = platform.hotKeys().registered.size();
        };
        fake.showSettings = note("settings");
        fake.showRecognisers = note("recognisers");
        fake.showHotKeyChoice = note("hotKeyChoice");
        fake.showFeedback = note("feedback");
        fake.maybePromptForFeedback = [this] {
            record(QStringLiteral("invite"));
            countAtInvitation = Config::get(Settings::dictationCount);
        };
        return fake;
    }

    /// Dictates for `length` and waits until the program is idle again.
    void dictate(const QString& text, std::chrono::milliseconds length = std::chrono::milliseconds(500)) {
        transcript = text;
        answer();
        platform.hotKeys().press();
        ageRecording(length);
        platform.hotKeys().release();
        spinUntil([this] { return delegate->state() == State::idle; });
    }

    void ageRecording(std::chrono::milliseconds length) { now_ += length; }
    void answer() { answered_.raise(); }

    void spinUntil(const std::function<bool()>& done) {
        const auto limit = Clock::now() + std::chrono::seconds(10);
        while (!done() && Clock::now() < limit) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        ASSERT_TRUE(done());
    }
    /// Lets everything that is queued happen.
    void settle() {
        bool reached = false;
        const Lifetime alive;
        MainQueue::after(std::chrono::milliseconds(0), alive.token(), [&] { reached = true; });
        spinUntil([&] { return reached; });
    }

    void record(const QString& call) {
        const std::lock_guard lock(mutex_);
        calls_.append(call);
    }
    QStringList calls() {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    QStringList filesLeft() const { return QDir(platform.directories().temporary()).entryList(QDir::Files); }

    std::unique_ptr<AppDelegate> delegate;
    QString transcript = QStringLiteral("Ciao a tutti.");
    QString suffix;
    std::atomic<Injector::Outcome> injection = Injector::Outcome::Delivered;
    std::optional<Error> conversionError;
    std::optional<Error> transcriptionError;
    std::optional<QString> available;
    std::optional<QString> installing;
    std::function<void()> onboardingFinished;
    std::function<void()> onboardingPutOff;
    bool putOff = false;
    std::function<void()> updaterChanged;
    std::size_t hotKeysAtWhatsNew = 0;
    qint64 countAtInvitation = 0;

  private:
    QString convert(const QString& recording) {
        EXPECT_TRUE(QFile::exists(recording));
        if (conversionError) throw Error(*conversionError);
        QString wav = recording.chopped(3) + QStringLiteral("wav");
        QFile file(wav);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(44, 'w'));
        return wav;
    }

    QString transcribe(const QString& wav) {
        EXPECT_TRUE(QFile::exists(wav));
        EXPECT_EQ(filesLeft().size(), 1) << "the recording is gone as soon as the WAV exists";
        answered_.wait();
        if (transcriptionError) throw Error(*transcriptionError);
        return transcript;
    }

    Clock::Signal answered_;
    Clock::TimePoint now_;
    std::mutex mutex_;
    QStringList calls_;  // under mutex_
};

}  // namespace parlivo
