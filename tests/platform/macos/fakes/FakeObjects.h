// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

/// The classes of the system that the adapters speak to, recording what they are asked and answering as a
/// test has them. They run on the plain Objective-C runtime of the compiler, without reference counts: what
/// is released when is what the compiler for macOS sees to.
namespace parlivo::mac {

struct Rectangle {
    double x = 0, y = 0, width = 0, height = 0;
};

/// What the fake classes answer; a fresh one for each test.
struct World {
    // NSPasteboard
    std::map<QString, QString> pasteboard;  ///< text by type
    bool refusesPasteboard = false;         ///< whatever is to be put there
    long changeCount = 7;

    // NSUserDefaults: bool, qlonglong, double, QString or QDateTime
    std::map<QString, QVariant> defaults;

    // NSBundle
    QString bundlePath;
    std::map<QString, QString> resources;  ///< path by name
    std::map<QString, QVariant> information;
    std::map<QString, std::map<QString, QVariant>> otherBundles;  ///< information by path

    // SMAppService and every other error
    long loginStatus = 0;
    bool succeeds = true;
    QString errorWords = QStringLiteral("Operation not permitted");

    // AVCaptureDevice
    long microphoneStatus = 0;
    bool grantsMicrophone = true;

    // NSScreen: the one that has the menu bar first
    std::vector<Rectangle> screenFrames;
    std::vector<Rectangle> visibleFrames;
    std::optional<std::size_t> mainScreen;

    // AVAudioEngine
    double sampleRate = 48'000;
    unsigned channels = 1;
    bool engineStarts = true;
    bool running = false;
    bool tapped = false;
};
World& world();
void renewWorld();

/// The audio system delivers one buffer, a list of samples for each channel; false when there is no tap.
/// `hostTime` is when it began, in nanoseconds of the fake's own clock; none is a time that is not valid.
bool deliverBuffer(const std::vector<std::vector<float>>& channels,
                   std::optional<std::uint64_t> hostTime = {}, std::size_t stride = 1);
/// The default microphone goes away or changes its format.
void changeConfiguration();
/// The fake's own clock of the host, in nanoseconds.
std::uint64_t hostNow();

/// A view with a window, as a toolkit's window id, and what the window was told.
quintptr makeView();
QStringList windowOf(quintptr view);

}  // namespace parlivo::mac
