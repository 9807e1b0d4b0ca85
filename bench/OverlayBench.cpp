// SPDX-License-Identifier: MIT

/// Measures the overlay.
///
/// usage: overlay_bench drawing    one frame, beside the same lines stroked by QPainter's pen
///        overlay_bench desktop    frames while shown and hidden, and the whole program while it records
///        overlay_bench frames COUNT SCALE    draws frames and measures nothing

#include "Allocations.h"
#include "Table.h"
#include "audio/overlay/DictationOverlay.h"
#include "desktop/dictation/Program.h"
#include "desktop/dictation/ProgramTest.h"
#include "platform/Adapters.h"
#include "support/Error.h"
#include "support/ReferenceWaveform.h"

#include <QApplication>
#include <QFile>

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <span>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;

constexpr QSizeF card(240, 84);
constexpr double framesPerSecond = 60;

double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The ribbon at the frame's moment, with a voice that comes and goes.
reference::Moment moment(int frame) {
    const double seconds = frame / framesPerSecond;
    return {card, seconds, 0.5 + 0.5 * std::sin(seconds)};
}

/// How a program draws these lines that leaves it to the toolkit: a pen for each strand.
void strokeByPen(QPainter& painter, const reference::Moment& at) {
    painter.setRenderHint(QPainter::Antialiasing);
    reference::paintCard(painter, at);
    for (int index = 0; index < 64; ++index) {
        const reference::Line strand = reference::strand(index);
        const double alpha = 0.03 + 0.08 * std::exp(-std::pow(1.35 * strand.u, 2));
        painter.strokePath(reference::path(at, strand, 3),
                           QPen(reference::ink(66, 60, 53, alpha), 0.7, Qt::SolidLine, Qt::RoundCap));
    }
    painter.strokePath(reference::path(at, reference::centreLine(), 2),
                       QPen(reference::ink(56, 50, 43, 0.62), 1.2, Qt::SolidLine, Qt::RoundCap));
}

Samples penTimes(double scale, int frames) {
    QImage picture((card * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    Samples times(static_cast<std::size_t>(frames));
    for (int frame = 0; frame < frames; ++frame) {
        const double begin = processorMilliseconds();
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.scale(scale, scale);
        strokeByPen(painter, moment(frame));
        painter.end();
        times.add(processorMilliseconds() - begin);
    }
    return times;
}

/// Each pixel of the card written once: less than that no frame costs.
Samples fillingTimes(double scale, int frames) {
    QImage picture((card * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    Samples times(static_cast<std::size_t>(frames));
    for (int frame = 0; frame < frames; ++frame) {
        const double begin = processorMilliseconds();
        picture.fill(frame);
        times.add(processorMilliseconds() - begin);
    }
    return times;
}

void measureFrame(Table& table, double scale, double target) {
    constexpr int frames = 1'200;
    WaveformPainter painter;
    Samples times(frames);
    Samples memory(frames);
    painter.frame(card, scale, FloatingPanel::Corners::Transparent, 0, 0);  // makes the room it needs
    for (int frame = 0; frame < frames; ++frame) {
        const auto [size, seconds, level] = moment(frame);
        const auto asked = allocations();
        const double begin = processorMilliseconds();
        painter.frame(size, scale, FloatingPanel::Corners::Transparent, seconds, level);
        times.add(processorMilliseconds() - begin);
        memory.add(static_cast<double>(allocations() - asked));
    }
    const std::string what = "a frame of 240 x 84 at " + std::to_string(static_cast<int>(scale)) + "x";
    const Samples pen = penTimes(scale, frames / 20);
    table.row(what, "ms", times, target, pen);
    Samples share;
    share.add(times.median() / pen.median());
    table.row(what + ": in parts of the pen's time", "", share, 0.4);
    table.row(what + ": the floor, its pixels filled once", "ms", fillingTimes(scale, frames), {});
    table.row(what + ": allocations", "", memory, 0);
}

/// A count that stays at 0 proves nothing unless it would have moved.
void requireThatAllocationsCount() {
    const auto before = allocations();
    const auto something = std::make_unique<QImage>(card.toSize(), QImage::Format_ARGB32_Premultiplied);
    if (allocations() == before || something->isNull())
        throw Error(QStringLiteral("Bench"), 1, QStringLiteral("allocations are not counted"));
}

int measureDrawing() {
    requireThatAllocationsCount();
    Table table("Drawing the overlay (processor time)", "QPainter's pen");
    measureFrame(table, 1, 1);
    measureFrame(table, 2, 2);
    return table.status();
}

void measureFrames(Table& table) {
    constexpr int rounds = 10;
    DictationOverlay overlay;
    int frames = 0;
    overlay.setLevelProvider([&frames] {
        ++frames;
        return 0.5F;
    });
    Samples shown;
    Samples hidden;
    for (int round = 0; round < rounds; ++round) {
        overlay.show();
        desktop::letPass(200ms);
        frames = 0;
        desktop::letPass(1s);
        shown.add(frames);
        overlay.hide();
        desktop::letPass(200ms);
        frames = 0;
        desktop::letPass(1s);
        hidden.add(frames);
    }
    table.row("frames a second while shown", "", shown, {});
    table.row("frames a second while hidden", "", hidden, 0);
}

/// The processor time that a process, all its threads together, has used so far, in seconds (proc(5),
/// "stat").
double processorSeconds(pid_t process) {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) throw Error(QStringLiteral("Bench"), 2, file.fileName());
    const QByteArray line = file.readAll();
    // The name in brackets may hold anything; the fields after it are numbers, user and system time among
    // them.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr int userTime = 11;
    constexpr int systemTime = 12;
    const auto ticks = fields.value(userTime).toDouble() + fields.value(systemTime).toDouble();
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

void measureProgram(Table& table) {
    constexpr int rounds = 5;
    constexpr auto measured = 4s;
    desktop::home::settle();
    const desktop::StubRecogniser stub(QStringLiteral("Ciao"));
    const desktop::Program program;
    if (!program.waitUntilUp()) throw Error(QStringLiteral("Bench"), 3, QStringLiteral("it does not start"));
    Samples idle;
    Samples recording;
    const auto share = [&] {
        const double before = processorSeconds(program.processId());
        const auto begin = std::chrono::steady_clock::now();
        desktop::letPass(measured);
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        return 100 * (processorSeconds(program.processId()) - before) / passed.count();
    };
    for (int round = 0; round < rounds; ++round) {
        if (!program.invoke("Press") || !program.waitForState(QStringLiteral("recording")))
            throw Error(QStringLiteral("Bench"), 4, QStringLiteral("it does not record"));
        desktop::letPass(500ms);
        recording.add(share());
        program.invoke("Release");
        program.waitForState(QStringLiteral("idle"));
        desktop::letPass(500ms);
        idle.add(share());
    }
    table.row("the whole program while it records, share of one core", "%", recording, 10);
    table.row("the whole program while idle, share of one core", "%", idle, {});
}

int measureDesktop() {
    Platform::install(makePlatform());
    Table table("The overlay on the desktop");
    measureFrames(table);
    measureProgram(table);
    Platform::install(nullptr);
    return table.status();
}

/// Nothing but frames, for a count of instructions.
int drawFrames(int count, double scale) {
    WaveformPainter painter;
    for (int frame = 0; frame < count; ++frame) {
        const auto [size, seconds, level] = moment(frame);
        painter.frame(size, scale, FloatingPanel::Corners::Transparent, seconds, level);
    }
    return 0;
}

int run(std::span<char*> arguments) {
    const std::string_view mode = arguments.size() >= 2 ? arguments[1] : "";
    if (mode == "frames" && arguments.size() == 4)
        return drawFrames(QByteArray(arguments[2]).toInt(), QByteArray(arguments[3]).toDouble());
    if (mode == "drawing") return measureDrawing();
    if (mode == "desktop") return measureDesktop();
    std::fputs("usage: overlay_bench drawing | desktop | frames COUNT SCALE\n", stderr);
    return 2;
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    try {
        const QApplication application(argc, argv);
        return parlivo::bench::run({argv, static_cast<std::size_t>(argc)});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "overlay_bench: %s\n", failure.what());
        return 2;
    }
}
