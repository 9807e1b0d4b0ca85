// SPDX-License-Identifier: MIT

/// Measures the way of the sound from the microphone to the WAV file.
///
/// usage: sound_bench processing        the capture tap, and the conversion beside sox and ffmpeg
///        sound_bench microphone NAME   key-down and key-up on the sound server that runs (called NAME)
///        sound_bench convert FROM TO   converts one file and prints its peak memory in kB
///        sound_bench record SECONDS CHANNELS   what the audio thread does with them; measures nothing

#include "Allocations.h"
#include "Table.h"
#include "audio/CaptureFile.h"
#include "audio/LevelMeter.h"
#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseMicrophone.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "platform/sound/BlockAssembler.h"
#include "support/Error.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <random>
#include <span>
#include <thread>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;

double milliseconds(Clock::Duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

std::vector<float> noise(std::size_t samples) {
    std::mt19937 random(1);
    std::normal_distribution<float> loudness(0.0F, 0.1F);
    std::vector<float> result(samples);
    for (float& sample : result) sample = loudness(random);
    return result;
}

// The capture tap.

/// A count that stays at 0 proves nothing unless it would have moved.
void requireThatAllocationsCount() {
    const auto before = allocations();
    const auto something = std::make_unique<std::vector<float>>(noise(1));
    if (allocations() == before || something->empty())
        throw Error(QStringLiteral("Bench"), 1, QStringLiteral("allocations are not counted"));
}

/// What the audio thread does with the pieces of one block, apart from the file.
void measureTap(Table& table, int channels) {
    constexpr std::size_t rounds = 5'000;
    constexpr std::size_t piece = 1'024;
    const auto recorder = std::make_shared<std::atomic<float>>(0.0F);
    BlockAssembler assembler(
        channels, [level = std::weak_ptr(recorder), channels](auto samples, std::size_t) {
            const auto alive = level.lock();
            const float target = LevelMeter::target(samples, static_cast<std::size_t>(channels));
            alive->store(LevelMeter::smoothed(alive->load(std::memory_order_relaxed), target),
                         std::memory_order_relaxed);
        });
    const auto sound = noise(piece * static_cast<std::size_t>(channels));
    Samples microseconds(rounds);
    Samples memory(rounds);
    for (std::size_t round = 0; round < rounds; ++round) {
        const auto asked = allocations();
        const auto begin = Clock::now();
        for (std::size_t at = 0; at < AudioCapture::blockFrames; at += piece)
            assembler.append(sound.data(), piece);
        microseconds.add(milliseconds(Clock::now() - begin) * 1'000);
        memory.add(static_cast<double>(allocations() - asked));
    }
    const std::string what =
        "tap, 4096 frames, " + std::to_string(channels) + " channel(s), without the file";
    table.row(what, "us", microseconds, 5);
    table.row(what + ": allocations", "", memory, 0);
}

void measureFile(Table& table) {
    constexpr std::size_t rounds = 1'000;
    const QTemporaryDir folder;
    CaptureFile file(folder.filePath(QStringLiteral("capture.caf")), {48'000, 2});
    const auto block = noise(2 * AudioCapture::blockFrames);
    Samples microseconds(rounds);
    Samples memory(rounds);
    for (std::size_t round = 0; round < rounds; ++round) {
        const auto asked = allocations();
        const auto begin = Clock::now();
        file.append(block, AudioCapture::blockFrames);
        microseconds.add(milliseconds(Clock::now() - begin) * 1'000);
        memory.add(static_cast<double>(allocations() - asked));
    }
    table.row("the tap's file, 4096 frames of stereo", "us", microseconds, {});
    table.row("the tap's file: allocations", "", memory, 0);
}

// The conversion.

struct Run {
    double milliseconds = 0;
    double peakKilobytes = 0;
};

/// Runs a program to its end. What it writes to its standard output, if a number, is taken for its peak
/// memory: the system's own count begins with what the parent had.
Run run(const QTemporaryDir& folder, std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const QByteArray output = folder.filePath(QStringLiteral("output")).toUtf8();
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.constData(),
                                     O_CREAT | O_WRONLY | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const auto begin = Clock::now();
    pid_t child = 0;
    int status = -1;
    rusage usage{};
    const bool started = posix_spawnp(&child, argv.front(), &actions, nullptr, argv.data(), environ) == 0;
    if (started) wait4(child, &status, 0, &usage);
    const auto end = Clock::now();
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) throw Error(QStringLiteral("Bench"), status, QString::fromStdString(arguments.front()));
    QFile answer(QString::fromUtf8(output));
    const double said = answer.open(QIODevice::ReadOnly) ? answer.readAll().trimmed().toDouble() : 0;
    return {milliseconds(end - begin), said > 0 ? said : static_cast<double>(usage.ru_maxrss)};
}

double ownPeakKilobytes() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:")) return line.mid(6).replace("kB", "").trimmed().toDouble();
    return 0;
}

void writeNoise(const QString& path, int seconds) {
    CaptureFile file(path, {48'000, 2});
    const auto second = noise(96'000);
    for (int i = 0; i < seconds; ++i) file.append(second, 48'000);
}

/// A capture file of silence that occupies no room on the disk (Apple, Core Audio Format 1.0).
void writeSilence(const QString& path, qint64 seconds) {
    const auto be = [](auto value) {
        const auto swapped = qToBigEndian(value);
        return QByteArray(reinterpret_cast<const char*>(&swapped), sizeof swapped);
    };
    constexpr quint32 floatingPoint = 1;
    constexpr quint32 littleEndian = 2;
    const qint64 bytes = seconds * 48'000 * 8;
    QByteArray header("caff\0\1\0\0desc", 12);
    header += be(qint64{32}) + be(48'000.0) + "lpcm" + be(floatingPoint | littleEndian) + be(quint32{8}) +
              be(quint32{1}) + be(quint32{2}) + be(quint32{32}) + "data" + be(bytes + 4) + be(quint32{0});
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(header) < 0 || !file.resize(header.size() + bytes))
        throw Error(QStringLiteral("Bench"), 1, file.errorString());
}

/// The capture file read once, and no more: less than that no conversion takes.
double millisecondsOfReading(const std::string& path) {
    QFile file(QString::fromStdString(path));
    std::vector<char> block(1 << 16);
    const auto begin = Clock::now();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw Error(QStringLiteral("Bench"), 1, file.errorString());
    while (file.read(block.data(), static_cast<qint64>(block.size())) > 0) {
    }
    return milliseconds(Clock::now() - begin);
}

void measureConversion(Table& table, const std::string& self) {
    const QTemporaryDir folder;
    const auto path = [&](const char* name) {
        return folder.filePath(QString::fromLatin1(name)).toStdString();
    };
    writeNoise(QString::fromStdString(path("long.caf")), 600);
    writeNoise(QString::fromStdString(path("short.caf")), 0);
    writeSilence(QString::fromStdString(path("hour.caf")), 3'600);

    Samples ours;
    Samples sox;
    Samples ffmpeg;
    Samples reading;
    Samples extra;
    Samples extraHour;
    Samples soxPeak;
    Samples ffmpegPeak;
    for (int round = 0; round < 7; ++round) {
        const double base = run(folder, {self, "convert", path("short.caf"), path("0.wav")}).peakKilobytes;
        const Run own = run(folder, {self, "convert", path("long.caf"), path("1.wav")});
        const Run theirs =
            run(folder, {"sox", path("long.caf"), "-r", "16000", "-c", "1", "-b", "16", path("2.wav")});
        const Run others = run(folder, {"ffmpeg", "-v", "error", "-y", "-i", path("long.caf"), "-ar", "16000",
                                        "-ac", "1", "-c:a", "pcm_s16le", path("3.wav")});
        const Run hour = run(folder, {self, "convert", path("hour.caf"), path("4.wav")});
        ours.add(own.milliseconds);
        reading.add(millisecondsOfReading(path("long.caf")));
        sox.add(theirs.milliseconds);
        ffmpeg.add(others.milliseconds);
        extra.add((own.peakKilobytes - base) / 1'024);
        extraHour.add((hour.peakKilobytes - base) / 1'024);
        soxPeak.add(theirs.peakKilobytes / 1'024);
        ffmpegPeak.add(others.peakKilobytes / 1'024);
    }
    table.row("conversion of 600 s, 48 kHz stereo: sox", "ms", sox, {});
    table.row("conversion of 600 s, 48 kHz stereo: ffmpeg", "ms", ffmpeg, {});
    table.row("conversion of 600 s, 48 kHz stereo: Parlivo", "ms", ours,
              std::min(sox.median(), ffmpeg.median()));
    table.row("the floor of that: its 230 MB read once", "ms", reading, {});
    table.row("peak memory of that: sox", "MB", soxPeak, {});
    table.row("peak memory of that: ffmpeg", "MB", ffmpegPeak, {});
    table.row("memory of that above an empty file's: Parlivo", "MB", extra, 16);
    table.row("memory of 3600 s above an empty file's: Parlivo", "MB", extraHour, 16);
}

int measureProcessing(const std::string& self) {
    requireThatAllocationsCount();
    Table table("Sound in the program");
    for (const int channels : {1, 2}) measureTap(table, channels);
    measureFile(table);
    measureConversion(table, self);
    return table.status();
}

// The microphone.

/// One press of the key: what the recorder does, with the moments noted.
class Press {
  public:
    explicit Press(const QString& path) : path_(path) {
        capture_ = PulseAudioInput(microphone_).open();
        if (!capture_) throw Error(QStringLiteral("Bench"), 1, QStringLiteral("no microphone"));
        file_.emplace(path, capture_->format());
        wav_ = SndfileWavConverter().convertWhileRecording(capture_->format(), path + QStringLiteral(".wav"));
        capture_->start([this](auto samples, std::size_t frames) { take(samples, frames); }, [] {});
        started_ = Clock::now();
    }

    void release() {
        released_ = Clock::now();
        capture_->stop(released_);
        capture_.reset();
        file_.reset();
        closed_ = Clock::now();
        wav_->finish();
        converted_ = Clock::now();
    }

    double toStarted() const { return milliseconds(started_ - pressed_); }
    /// The first block's frames were captured one after the other until it arrived, or earlier.
    double toFirstSample() const { return milliseconds(firstBlock_.load() - firstLength_ - pressed_); }
    double toClosed() const { return milliseconds(closed_ - released_); }
    double toWav() const { return milliseconds(converted_ - released_); }

  private:
    void take(std::span<const float> samples, std::size_t frames) {
        if (first_.exchange(false)) {
            const std::chrono::duration<double> length(static_cast<double>(frames) /
                                                       capture_->format().sampleRate);
            firstLength_ = std::chrono::duration_cast<Clock::Duration>(length);
            firstBlock_ = Clock::now();
        }
        file_->append(samples, frames);
        wav_->append(samples, frames);
    }

    const QString path_;
    PulseMicrophone microphone_;
    const Clock::TimePoint pressed_ = Clock::now();
    std::optional<CaptureFile> file_;
    std::unique_ptr<WavStream> wav_;
    std::unique_ptr<AudioCapture> capture_;
    std::atomic<bool> first_ = true;
    Clock::Duration firstLength_{};
    std::atomic<Clock::TimePoint> firstBlock_{};
    Clock::TimePoint started_;
    Clock::TimePoint released_;
    Clock::TimePoint closed_;
    Clock::TimePoint converted_;
};

int measureMicrophone(const std::string& server) {
    constexpr int rounds = 30;
    const QTemporaryDir folder;
    const auto path = [&](int round) { return folder.filePath(QStringLiteral("%1.caf").arg(round)); };
    Table table("The microphone of " + server);
    Samples toStarted;
    Samples toFirstSample;
    Samples toClosed;
    Samples toWav;
    for (int round = 0; round < rounds; ++round) {
        Press press(path(round));
        // The end falls on every part of the server's pieces of sound.
        std::this_thread::sleep_for(round < 10 ? 5s : 400ms + 7ms * round);
        press.release();
        toStarted.add(press.toStarted());
        toFirstSample.add(press.toFirstSample());
        toClosed.add(press.toClosed());
        if (round < 10) toWav.add(press.toWav());
        QFile::remove(path(round));
    }
    table.row("key-down to capture running", "ms", toStarted, {});
    table.row("key-down to the first captured sample", "ms", toFirstSample, 60);
    table.row("key-up to the recording closed, last sound included", "ms", toClosed, {});
    table.row("key-up to the WAV of 5 s (of 20 ms to the request)", "ms", toWav, 15);
    return table.status();
}

int convert(const char* from, const char* to) {
    SndfileWavConverter().convert(QString::fromLocal8Bit(from), QString::fromLocal8Bit(to));
    std::printf("%.0f\n", ownPeakKilobytes());
    return 0;
}

/// What the audio thread does with so many seconds of sound, for a count of instructions.
int record(int seconds, int channels) {
    const QTemporaryDir folder;
    const AudioFormat format{48'000, channels};
    CaptureFile file(folder.filePath(QStringLiteral("capture.caf")), format);
    const auto wav =
        SndfileWavConverter().convertWhileRecording(format, folder.filePath(QStringLiteral("capture.wav")));
    float level = 0;
    BlockAssembler assembler(channels, [&](std::span<const float> samples, std::size_t frames) {
        file.append(samples, frames);
        wav->append(samples, frames);
        level = LevelMeter::smoothed(level, LevelMeter::target(samples, static_cast<std::size_t>(channels)));
    });
    constexpr std::size_t piece = 480;
    const auto sound = noise(piece * static_cast<std::size_t>(channels));
    for (int i = 0; i < seconds * 100; ++i) assembler.append(sound.data(), piece);
    wav->finish();
    return level > 0 ? 0 : 2;
}

int main(std::span<char*> arguments) {
    const std::string mode = arguments.size() > 1 ? arguments[1] : "";
    if (mode == "processing") return measureProcessing(arguments[0]);
    if (mode == "microphone" && arguments.size() == 3) return measureMicrophone(arguments[2]);
    if (mode == "convert" && arguments.size() == 4) return convert(arguments[2], arguments[3]);
    if (mode == "record" && arguments.size() == 4)
        return record(QByteArray(arguments[2]).toInt(), QByteArray(arguments[3]).toInt());
    std::fputs(
        "usage: sound_bench processing | microphone NAME | convert FROM TO | record SECONDS CHANNELS\n",
        stderr);
    return 2;
}

}  // namespace
}  // namespace parlivo::bench

int main(int count, char** arguments) {
    try {
        return parlivo::bench::main({arguments, static_cast<std::size_t>(count)});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sound_bench: %s\n", error.what());
        return 2;
    }
}
