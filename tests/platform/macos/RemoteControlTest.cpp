// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/session/LocalSocket.h"
#include "platform/macos/session/SocketRemoteControl.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace parlivo {
namespace {

constexpr int replyTimeout = 20'000;  // ms

class RemoteControlTest : public MacTest {
  protected:
    RemoteTarget target() {
        return {.perform = [this](RemoteCommand command) { performed.push_back(command); },
                .state = [this] { return state; },
                .statusText = [] { return QStringLiteral("Sto ascoltando…"); },
                .version = [] { return QStringLiteral("1.2.3"); }};
    }

    /// Serves while another thread asks.
    template <typename Answer>
    static Answer during(const std::function<Answer()>& question) {
        Answer answer{};
        std::atomic<bool> answered = false;
        std::thread asking([&] {
            answer = question();
            answered = true;
        });
        while (!answered) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        asking.join();
        return answer;
    }

    QByteArray ask(const QByteArray& line) const {
        return during<QByteArray>(
            [this, line] { return LocalSocket::ask(socket, line, replyTimeout).value_or("no answer"); });
    }

    RemoteControl::Delivery send(RemoteCommand command) const {
        return during<RemoteControl::Delivery>(
            [this, command] { return SocketRemoteControl(home).send(command); });
    }

    QTemporaryDir folder;
    const QString home = folder.filePath(QStringLiteral("Parlivo"));
    const QString socket = home + QStringLiteral("/control");
    QString state = QStringLiteral("idle");
    std::vector<RemoteCommand> performed;
};

TEST_F(RemoteControlTest, OnlyOneInstanceAtATimeIsRegistered) {
    SocketRemoteControl second(home);
    {
        SocketRemoteControl first(home);
        EXPECT_EQ(first.registerInstance(), RemoteControl::Instance::Only);
        EXPECT_EQ(first.registerInstance(), RemoteControl::Instance::Only) << "asked twice";
        EXPECT_EQ(second.registerInstance(), RemoteControl::Instance::Another);
    }
    EXPECT_EQ(second.registerInstance(), RemoteControl::Instance::Only);
}

TEST_F(RemoteControlTest, EveryCommandReachesTheRunningInstance) {
    SocketRemoteControl control(home);
    control.registerInstance();
    control.serve(target());
    const std::vector commands{RemoteCommand::Press,        RemoteCommand::Release,
                               RemoteCommand::Toggle,       RemoteCommand::ShowSettings,
                               RemoteCommand::ShowFeedback, RemoteCommand::Quit};
    for (const RemoteCommand command : commands) EXPECT_EQ(send(command), RemoteControl::Delivery::Done);
    EXPECT_EQ(performed, commands);
}

TEST_F(RemoteControlTest, WithoutAnInstanceThereIsNobodyToAsk) {
    EXPECT_EQ(send(RemoteCommand::Toggle), RemoteControl::Delivery::NoInstance);
    {
        SocketRemoteControl control(home);
        control.registerInstance();
        control.serve(target());
    }
    EXPECT_EQ(send(RemoteCommand::Toggle), RemoteControl::Delivery::NoInstance);
}

TEST_F(RemoteControlTest, LeftoversOfAKilledInstanceAreIgnored) {
    ASSERT_TRUE(QDir().mkpath(home));
    { const UniqueFd left = LocalSocket::listenAt(socket); }
    ASSERT_TRUE(QFile::exists(socket));
    EXPECT_EQ(send(RemoteCommand::Toggle), RemoteControl::Delivery::NoInstance);
    SocketRemoteControl control(home);
    EXPECT_EQ(control.registerInstance(), RemoteControl::Instance::Only);
    control.serve(target());
    EXPECT_EQ(send(RemoteCommand::Toggle), RemoteControl::Delivery::Done);
}

TEST_F(RemoteControlTest, AnInstanceThatQuitsAnswersFirst) {
    auto control = std::make_unique<SocketRemoteControl>(home);
    control->registerInstance();
    RemoteTarget quitting = target();
    quitting.perform = [&](RemoteCommand) { control.reset(); };
    control->serve(quitting);
    EXPECT_EQ(send(RemoteCommand::Quit), RemoteControl::Delivery::Done);
    EXPECT_FALSE(control);
}

TEST_F(RemoteControlTest, ScriptsReadStateStatusTextAndVersion) {
    SocketRemoteControl control(home);
    control.registerInstance();
    control.serve(target());
    EXPECT_EQ(ask("State"), "idle");
    EXPECT_EQ(ask("StatusText"), QByteArray("Sto ascoltando…"));
    EXPECT_EQ(ask("Version"), "1.2.3");
    for (const char* nonsense : {"", "press", "State ", "Quit\rPress"})
        EXPECT_EQ(ask(nonsense), "unknown") << nonsense;
    EXPECT_EQ(ask(QByteArray(1000, 'x')), "unknown") << "a line longer than any request";
    EXPECT_TRUE(performed.empty());
}

TEST_F(RemoteControlTest, AWatcherIsToldEachChangeOfState) {
    SocketRemoteControl control(home);
    control.registerInstance();
    control.serve(target());
    const QStringList seen = during<QStringList>([&] {
        QStringList lines;
        const UniqueFd watcher = LocalSocket::connectTo(socket);
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(replyTimeout);
        LocalSocket::sendAll(watcher.get(), "Watch\n", end);
        while (lines.size() < 3) {
            const auto line = LocalSocket::receiveLine(watcher.get(), end);
            if (!line) break;
            lines.append(QString::fromUtf8(*line));
            if (lines.size() == 1) {
                QMetaObject::invokeMethod(QCoreApplication::instance(), [&] {
                    control.announceState(QStringLiteral("recording"));
                    control.announceState(QStringLiteral("idle"));
                });
            }
        }
        return lines;
    });
    EXPECT_EQ(seen,
              QStringList({QStringLiteral("idle"), QStringLiteral("recording"), QStringLiteral("idle")}));
    control.announceState(QStringLiteral("typing"));  // to a watcher that is gone
    EXPECT_EQ(ask("State"), "idle");
}

TEST_F(RemoteControlTest, OnlyTheUserCanConnect) {
    SocketRemoteControl control(home);
    control.registerInstance();
    control.serve(target());
    struct stat status {};
    ASSERT_EQ(stat(QFile::encodeName(socket).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(RemoteControlTest, AnInstanceThatHangsIsNotWaitedForWithoutEnd) {
    ASSERT_TRUE(QDir().mkpath(home));
    const UniqueFd deaf = LocalSocket::listenAt(socket);
    ASSERT_TRUE(deaf);
    EXPECT_EQ(LocalSocket::ask(socket, "State", 50), std::nullopt);
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST_F(RemoteControlTest, AFolderWithATooLongNameIsUnavailable) {
    const QString deep = home + QLatin1Char('/') + QString(200, QLatin1Char('d'));
    SocketRemoteControl control(deep);
    EXPECT_EQ(control.registerInstance(), RemoteControl::Instance::Only);
    control.serve(target());
    EXPECT_EQ(control.send(RemoteCommand::Toggle), RemoteControl::Delivery::Unavailable);
    EXPECT_EQ(control.whyUnavailable(), QStringLiteral("il canale di controllo in %1 non si apre").arg(deep));
}

}  // namespace
}  // namespace parlivo
