#include "FuzzTarget.h"
#include "support/HttpResponseReader.h"

#include <algorithm>

namespace parlivo::fuzz {

namespace {

using Progress = HttpResponseReader::Progress;

constexpr qint64 maximumBody = 256;

struct Outcome {
    Progress taken;
    Progress ended;
    int status = 0;
    QByteArray body;

    bool operator==(const Outcome&) const = default;
};

Outcome readInPieces(const QByteArray& response, qsizetype length) {
    HttpResponseReader reader(maximumBody);
    Progress taken = Progress::More;
    for (qsizetype at = 0; at < response.size(); at += length) {
        taken = reader.take(response.mid(at, length));
        expect(reader.body().size() <= maximumBody, "a body has its limit");
    }
    const Progress ended = reader.end();
    if (ended != Progress::Whole) return {taken, ended, 0, {}};
    return {taken, ended, reader.status(), reader.body()};
}

}  // namespace

/// How long the pieces are, and the response.
void attack(const QByteArray& input) {
    if (input.isEmpty()) return;
    const QByteArray response = input.sliced(1);
    const auto length = std::max<qsizetype>(static_cast<unsigned char>(input.front()), 1);
    const Outcome outcome = readInPieces(response, length);
    expect(outcome.ended != Progress::More, "the end of the connection is the end");
    expect(outcome.taken == Progress::More || outcome.taken == outcome.ended,
           "what is settled stays settled");
    if (outcome.ended == Progress::Whole) {
        expect(outcome.status >= 200 && outcome.status <= 999, "a response has a status, and a final one");
        expect(response.startsWith("HTTP/1."), "a response is one");
    }
    expect(outcome == readInPieces(response, response.size() + 1), "where it was cut does not matter");
}

}  // namespace parlivo::fuzz
