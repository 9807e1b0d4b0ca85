// SPDX-License-Identifier: MIT
#include "support/SoundServer.h"

#include "support/Waiting.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>

namespace parlivo::desktop {

namespace {

/// The signal: a ramp that rises by a little more than one step of a 16-bit sample at a time. Silence is 0.
constexpr double lowest = 0.02;
constexpr double highest = 0.95;

QString processFile(const QString& name) {
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/desktop/%1.pid").arg(name);
}

QString serverName() {
    return soundServer::isPipeWire() ? QStringLiteral("pipewire-pulse") : QStringLiteral("pulseaudio");
}

void signalServer(int signal) {
    QFile file(processFile(serverName()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ASSERT_EQ(::kill(static_cast<pid_t>(file.readAll().trimmed().toLongLong()), signal), 0);
}

/// Unloads the module that was loaded with this argument.
void unload(const QString& argument) {
    const QString list =
        soundServer::pactl({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("modules")});
    for (const QString& line : list.split(QLatin1Char('\n')))
        if (line.split(QRegularExpression(QStringLiteral("\\s"))).contains(argument))
            soundServer::pactl({QStringLiteral("unload-module"), line.section(QLatin1Char('\t'), 0, 0)});
}

QStringList loudspeakerModule(const QString& name) {
    QStringList command{QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                        QStringLiteral("sink_name=") + name, QStringLiteral("rate=48000")};
    if (soundServer::isPipeWire())
        return command << QStringLiteral("media.class=Audio/Sink") << QStringLiteral("channel_map=mono");
    return command << QStringLiteral("channels=1") << QStringLiteral("norewinds=1");
}

QStringList microphoneModule(const QString& name, const QString& heard) {
    QStringList command{QStringLiteral("load-module"), QStringLiteral("module-remap-source"),
                        QStringLiteral("master=") + heard, QStringLiteral("source_name=") + name};
    // A real microphone has a priority. Among devices without one, WirePlumber 0.5 makes a monitor the
    // default.
    if (soundServer::isPipeWire()) command << QStringLiteral("source_properties=priority.session=2000");
    return command;
}

QByteArray rampOf(std::chrono::seconds length) {
    const auto frames = Speaker::sampleRate * length.count();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(frames));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double place = static_cast<double>(i % Speaker::period) / Speaker::period;
        samples[i] = static_cast<std::int16_t>(32'767 * (lowest + (highest - lowest) * place));
    }
    return QByteArray(reinterpret_cast<const char*>(samples.data()),
                      static_cast<qsizetype>(samples.size()) * qsizetype{sizeof(std::int16_t)});
}

}  // namespace

namespace soundServer {

bool isPipeWire() {
    return QFile::exists(processFile(QStringLiteral("pipewire-pulse")));
}

QString pactl(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral("pactl"), arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QStringList sources() {
    QStringList names;
    const QString list = pactl({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sources")});
    for (const QString& line : list.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        names.append(line.section(QLatin1Char('\t'), 1, 1));
    return names;
}

void removeMicrophone() {
    unload(QStringLiteral("source_name=microfono"));
    ASSERT_TRUE(waitFor([] { return !sources().contains(QStringLiteral("microfono")); }));
}

void removeLoudspeaker() {
    unload(QStringLiteral("sink_name=cavo"));
    ASSERT_TRUE(waitFor([] { return !sources().contains(QStringLiteral("cavo.monitor")); }));
}

void addPair(const QString& loudspeaker, const QString& microphone) {
    pactl(loudspeakerModule(loudspeaker));
    const QString monitor = loudspeaker + QStringLiteral(".monitor");
    ASSERT_TRUE(waitFor([&] { return sources().contains(monitor); }));
    pactl(microphoneModule(microphone, monitor));
    ASSERT_TRUE(waitFor([&] { return sources().contains(microphone); }));
}

void setDefaultSource(const QString& source) {
    ASSERT_TRUE(waitFor([&] {
        pactl({QStringLiteral("set-default-source"), source});
        return pactl({QStringLiteral("get-default-source")}) == source;
    })) << source.toStdString();
}

void kill() {
    signalServer(SIGKILL);
}

void freeze() {
    signalServer(SIGSTOP);
}

void thaw() {
    signalServer(SIGCONT);
}

}  // namespace soundServer

Speaker::Speaker(const QString& loudspeaker)
    : signal_(std::make_unique<QTemporaryFile>()), process_(std::make_unique<QProcess>()) {
    if (!signal_->open() || signal_->write(rampOf(std::chrono::seconds(60))) < 0 || !signal_->flush())
        ADD_FAILURE() << "the signal cannot be written";
    process_->start(QStringLiteral("paplay"),
                    {QStringLiteral("--raw"), QStringLiteral("--format=s16le"),
                     QStringLiteral("--channels=1"), QStringLiteral("--rate=%1").arg(sampleRate),
                     QStringLiteral("--device=") + loudspeaker, signal_->fileName()});
    EXPECT_TRUE(process_->waitForStarted());
}

Speaker::~Speaker() {
    process_->kill();
    process_->waitForFinished();
}

std::vector<double> Speaker::placesIn(const std::vector<float>& samples) {
    const float peak = samples.empty() ? 0.0F : *std::max_element(samples.begin(), samples.end());
    std::vector<double> places;
    for (const float sample : samples) {
        const double share = static_cast<double>(sample) / static_cast<double>(peak) * highest;
        places.push_back(share < lowest / 2 ? -1 : (share - lowest) / (highest - lowest) * period);
    }
    return places;
}

}  // namespace parlivo::desktop
