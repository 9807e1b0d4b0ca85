// SPDX-License-Identifier: MIT
#include "desktop/dictation/Sound.h"

#include "desktop/dictation/Program.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>

namespace parlivo::desktop {

namespace {

const auto server = QStringLiteral("pulseaudio");

void run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(waitFor([&] { return process.state() == QProcess::NotRunning; }));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
}

}  // namespace

Voice::Voice(const demo::Phrase& phrase) : wav_(demo::speak(phrase, folder_.path())) {}

void Voice::speak() const {
    run(QStringLiteral("paplay"), {QStringLiteral("--device=cavo"), wav_});
}

void separateSpeakerFromMicrophone() {
    soundServer::pactl({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                        QStringLiteral("sink_name=cuffie")});
    soundServer::pactl({QStringLiteral("set-default-sink"), QStringLiteral("cuffie")});
    ASSERT_EQ(soundServer::pactl({QStringLiteral("get-default-sink")}), QStringLiteral("cuffie"));
}

QStringList recordingStreams() {
    const QString list = soundServer::pactl(
        {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("source-outputs")});
    // The virtual microphone is a stream of the server's own.
    return list.split(QLatin1Char('\n'), Qt::SkipEmptyParts).filter(QStringLiteral("protocol-native"));
}

void endSoundServer() {
    // The one that came with the desktop, or a later one.
    for (const pid_t process : processesNamed(server)) ::kill(process, SIGKILL);
    ASSERT_TRUE(waitFor([] { return processesNamed(server).empty(); }));
}

void startSoundServer() {
    ASSERT_TRUE(QProcess::startDetached(
        server, {QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"),
                 QStringLiteral("-n"), QStringLiteral("-L"), QStringLiteral("module-native-protocol-unix")}));
    ASSERT_TRUE(waitFor([] { return !soundServer::pactl({QStringLiteral("info")}).isEmpty(); }));
    soundServer::addPair(QStringLiteral("cavo"), QStringLiteral("microfono"));
    soundServer::setDefaultSource(QStringLiteral("microfono"));
}

}  // namespace parlivo::desktop
