// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QProcess;
class QTemporaryFile;

namespace parlivo::desktop {

/// The sound server of the test's desktop, with its loudspeaker "cavo" and the microphone "microfono" that
/// hears it. A command that the server refuses fails the test.
namespace soundServer {

bool isPipeWire();

/// The answer of pactl to these arguments, without the line end. An error of pactl gives an empty answer.
QString pactl(const QStringList& arguments);
QStringList sources();

/// Removes the microphone; the loudspeaker's monitor stays.
void removeMicrophone();
/// Removes the loudspeaker as well.
void removeLoudspeaker();
/// Adds a loudspeaker NAME and a microphone MICROPHONE that hears it.
void addPair(const QString& loudspeaker, const QString& microphone);
void setDefaultSource(const QString& source);

/// Kills, stops or continues the server program that clients talk to.
void kill();
void freeze();
void thaw();

}  // namespace soundServer

/// Plays a signal on a loudspeaker, repeated as long as this object exists. Each sample encodes its own
/// position in the signal.
class Speaker {
  public:
    static constexpr int sampleRate = 48'000;
    /// The signal repeats after this number of samples.
    static constexpr int period = 24'000;

    explicit Speaker(const QString& loudspeaker = QStringLiteral("cavo"));
    ~Speaker();
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;

    /// The places in the signal, 0 to `period`, of recorded samples; -1 for silence. The recording must be
    /// longer than a period, since how loud it came through is taken from it.
    static std::vector<double> placesIn(const std::vector<float>& samples);

  private:
    const std::unique_ptr<QTemporaryFile> signal_;
    const std::unique_ptr<QProcess> process_;
};

}  // namespace parlivo::desktop
