// SPDX-License-Identifier: MIT

/// Measures how time and memory grow with what the program is given.
///
/// usage: growth_bench PLOT-DATA       all stages at all sizes, one process each: a Markdown table, and the
///                                     numbers in a file for gnuplot
///        growth_bench STAGE SIZE      one of them: milliseconds and kilobytes above what was there before
///
/// It takes the engines' ports, and needs a display.

#include "Table.h"
#include "stages/Stages.h"
#include "support/ChildProcess.h"
#include "support/Clock.h"
#include "support/SerialQueue.h"
#include "support/TypingPlatform.h"
#include "support/Worker.h"

#include <QApplication>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;

struct Cost {
    double milliseconds = 0;
    double megabytes = 0;
};

/// A line of proc(5), /proc/PID/status, in kB.
double statusLine(const QByteArray& name) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) throw std::runtime_error("no /proc/self/status");
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(name)) return line.mid(name.size()).replace("kB", "").trimmed().toDouble();
    throw std::runtime_error("no memory in /proc/self/status");
}

void forgetPeak() {
    // proc(5), /proc/PID/clear_refs: the highest resident size begins anew.
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (!file.open(QIODevice::WriteOnly) || file.write("5") != 1 || !file.flush())
        throw std::runtime_error("the peak of memory cannot be reset");
}

/// The median over a second, and at least three rounds after a first one, which does what is done once only.
Cost measure(const Stage& stage, qint64 size) {
    const auto work = stage.prepare(size);
    const double before = statusLine("VmRSS:");
    forgetPeak();
    work();
    Samples samples;
    const auto end = Clock::now() + 1s;
    for (int round = 0; round < 3 || (round < 200 && Clock::now() < end); ++round) {
        const auto begin = Clock::now();
        work();
        samples.add(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    return {samples.median(), (statusLine("VmHWM:") - before) / 1'024};
}

/// Does the work where the program does it, and gives the exit status.
int measureHere(QApplication& application, const Stage& stage, qint64 size) {
    int status = 0;
    {
        const desktop::TypingProgram program;
        SerialQueue pipeline(QStringLiteral("pipeline"));
        pipeline.async([&] {
            try {
                const Cost cost = measure(stage, size);
                std::printf("%.6f %.3f\n", cost.milliseconds, cost.megabytes);
            } catch (const std::exception& failure) {
                std::fprintf(stderr, "growth_bench: %s\n", failure.what());
                status = 2;
            }
            QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
        });
        QApplication::exec();
        ChildProcess::endAll();
    }
    Worker::endAll();
    return status;
}

Cost measureInAChild(const Stage& stage, qint64 size) {
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
                {QString::fromStdString(stage.name), QString::number(size)});
    child.waitForFinished(-1);
    const QByteArrayList numbers = child.readAllStandardOutput().trimmed().split(' ');
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0 || numbers.size() != 2)
        throw std::runtime_error(stage.name + " at " + std::to_string(size) + " failed");
    return {numbers[0].toDouble(), numbers[1].toDouble()};
}

/// The power of the size that something grows with, from one of the stage's sizes to the last one.
double power(const Stage& stage, std::size_t from, double before, double last) {
    const double step = static_cast<double>(stage.sizes.back()) / static_cast<double>(stage.sizes[from]);
    return std::log(last / before) / std::log(step);
}

/// Growth is judged over the last two steps: before, what is done once at any size weighs more than the size.
std::size_t firstJudged(const Stage& stage) {
    return stage.sizes.size() - 3;
}

/// A line of the table; false when the stage grows faster than its size.
bool report(const Stage& stage, const std::vector<Cost>& costs) {
    // What fitted into the processor's caches at one size may not at the next.
    constexpr double linear = 1.15;
    // A smaller peak is the noise of the allocator.
    constexpr double megabytesThatCount = 1;
    const std::size_t from = firstJudged(stage);
    const Cost& before = costs[from];
    const Cost& last = costs.back();
    const double time = power(stage, from, before.milliseconds, last.milliseconds);
    const double memory = power(stage, from, std::max(before.megabytes, megabytesThatCount),
                                std::max(last.megabytes, megabytesThatCount));
    const bool met = time <= linear && memory <= linear;
    std::printf("| %s |", stage.what.c_str());
    for (const Cost& cost : costs) std::printf(" %.3g ms, %.3g MB |", cost.milliseconds, cost.megabytes);
    std::printf(" %.2f | %.2f | %s |\n", time, memory, met ? "met" : "**missed**");
    std::fflush(stdout);
    return met;
}

/// The table's head, where the sizes are others than those of the stage before.
void beginTable(const Stage& stage) {
    std::printf("\n| %s |", stage.unit.c_str());
    for (const auto size : stage.sizes) std::printf(" %lld |", static_cast<long long>(size));
    std::printf(" time's power | memory's power | at most 1.15 |\n|---|");
    for (std::size_t i = 0; i < stage.sizes.size(); ++i) std::printf("---:|");
    std::printf("---:|---:|---|\n");
}

int measureAll(const char* dataFile) {
    QFile data(QString::fromLocal8Bit(dataFile));
    if (!data.open(QIODevice::WriteOnly)) throw std::runtime_error("the plot's data cannot be written");
    bool met = true;
    std::string unit;
    for (const Stage& stage : stages()) {
        if (unit != stage.unit) beginTable(stage);
        unit = stage.unit;
        std::vector<Cost> costs;
        // gnuplot takes two empty lines for the end of one set of data, and the first line for its title.
        data.write("\"" + QByteArray::fromStdString(stage.what) + "\"\n");
        for (const auto size : stage.sizes) {
            costs.push_back(measureInAChild(stage, size));
            data.write(QStringLiteral("%1 %2 %3\n")
                           .arg(size)
                           .arg(costs.back().milliseconds)
                           .arg(costs.back().megabytes)
                           .toLatin1());
        }
        data.write("\n\n");
        met = report(stage, costs) && met;
    }
    return met ? 0 : 1;
}

int main(QApplication& application, const QStringList& arguments) {
    if (arguments.size() == 2) return measureAll(arguments[1].toLocal8Bit().constData());
    for (const Stage& stage : stages())
        if (arguments.size() == 3 && arguments[1].toStdString() == stage.name)
            return measureHere(application, stage, arguments[2].toLongLong());
    std::fputs("usage: growth_bench PLOT-DATA | STAGE SIZE\n", stderr);
    return 2;
}

}  // namespace
}  // namespace parlivo::bench

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    try {
        return parlivo::bench::main(application, QCoreApplication::arguments());
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "growth_bench: %s\n", failure.what());
        return 2;
    }
}
