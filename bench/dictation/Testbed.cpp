// SPDX-License-Identifier: MIT
#include "dictation/Testbed.h"

#include "support/Waiting.h"

#include <QtEndian>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace parlivo::bench {

namespace {

constexpr quint16 recogniserPort = 8765;

/// Of the recording in a request: mono, 16 bit, 16 kHz (Microsoft and IBM, Multimedia Programming Interface
/// and Data Specifications 1.0, "RIFF Waveform Audio File Format").
std::chrono::duration<double> lengthOfSound(const QByteArray& body) {
    constexpr double bytesPerSecond = 32'000;
    const qsizetype chunk = body.indexOf("data", body.indexOf("WAVEfmt "));
    if (chunk < 0 || body.size() < chunk + 8) return {};
    const auto bytes = qFromLittleEndian<quint32>(body.constData() + chunk + 4);
    return std::chrono::duration<double>(bytes / bytesPerSecond);
}

}  // namespace

double milliseconds(SteadyClock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

TimedRecogniser::TimedRecogniser() : server_(recogniserPort) {
    server_.on("/", StubReply::body("<html>", 200, "text/html"));
    server_.on("/inference", [this](const StubServer::Request& request) {
        const auto length = lengthOfSound(request.body);
        const std::lock_guard lock(mutex_);
        request_ = Request{request.arrived, SteadyClock::now(), length};
        return reply_;
    });
}

void TimedRecogniser::setTranscript(const QString& text) {
    const std::lock_guard lock(mutex_);
    reply_ = StubReply::json({{QStringLiteral("text"), text}});
}

std::optional<TimedRecogniser::Request> TimedRecogniser::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(request_, std::nullopt);
}

std::vector<SteadyClock::time_point> TimedRecogniser::probesSince(SteadyClock::time_point begin) const {
    std::vector<SteadyClock::time_point> moments;
    for (const auto& request : server_.requests("/"))
        if (request.arrived >= begin) moments.push_back(request.arrived);
    return moments;
}

double Dictation::paceError(SteadyClock::duration pause) const {
    const auto steps = static_cast<double>(keys.size() - 1);
    const double taken = milliseconds(keys.back() - keys.front());
    return 100 * std::abs(taken / (steps * milliseconds(pause)) - 1);
}

Dictation Testbed::dictate(DictationMethod& way, std::chrono::milliseconds hold, const QString& text) {
    recogniser_.setTranscript(text);
    received_ += text;
    Dictation dictation;
    dictation.pressed = SteadyClock::now();
    way.press();
    desktop::letPass(hold);
    dictation.released = SteadyClock::now();
    way.release();
    std::optional<TimedRecogniser::Request> request;
    require(desktop::waitFor([&] { return (request = recogniser_.take()).has_value(); }), "no request came");
    dictation.request = *request;
    require(desktop::waitFor([&] { return way.isOver(); }), "the dictation does not end");
    require(receiver_.waitForText(received_), "the text did not arrive as it was understood");
    const auto pressed = [&] { return (dictation.keys = listener_.pressesSince(request->answered)).size(); };
    // The listener may hear of the last ones after the receiver.
    const auto wanted = static_cast<std::size_t>(text.size());
    require(desktop::waitFor([&] { return pressed() >= wanted; }) && pressed() == wanted,
            "other keys than those of the text");
    return dictation;
}

}  // namespace parlivo::bench
