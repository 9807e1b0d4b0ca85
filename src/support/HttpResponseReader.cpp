#include "support/HttpResponseReader.h"

#include <QList>

#include <algorithm>
#include <limits>

namespace parlivo {

namespace {

/// Of a head, of a line that tells a chunk's size, of a trailer: no server that we ask says so much.
constexpr qsizetype longestHead = 64 << 10;
const QByteArray headEnd("\r\n\r\n");
const QByteArray lineEnd("\r\n");

/// The value of a header, in lower case; nothing where there is none.
std::optional<QByteArray> header(const QByteArray& head, const QByteArray& name) {
    for (const QByteArray& line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).toLower() == name) return line.mid(colon + 1).trimmed().toLower();
    }
    return std::nullopt;
}

/// Of a line like "HTTP/1.1 200 OK"; 0 for any other.
int statusOf(const QByteArray& head) {
    const QList<QByteArray> words = head.split('\r').first().split(' ');
    const int status = words.value(1).toInt();
    return words.first().startsWith("HTTP/1.") && status >= 100 && status <= 999 ? status : 0;
}

bool isInterim(int status) {
    return status < 200;
}

bool hasNoBody(int status) {
    return status == 204 || status == 304;
}

}  // namespace

HttpResponseReader::Progress HttpResponseReader::take(const QByteArray& bytes) {
    pending_ += bytes;
    while (progress_ == Progress::More && advance()) continue;
    return progress_;
}

HttpResponseReader::Progress HttpResponseReader::end() {
    if (progress_ == Progress::More) {
        conclude(part_ == Part::BodyToTheEnd ? Progress::Whole : Progress::Broken);
    }
    return progress_;
}

/// Takes one step through what is pending. False when it needs more of it.
bool HttpResponseReader::advance() {
    switch (part_) {
        case Part::Head:
            return readHead();
        case Part::SizedBody:
            return readBody(Part::Nothing);
        case Part::ChunkSize:
            return readChunkSize();
        case Part::Chunk:
            return readBody(Part::ChunkEnd);
        case Part::ChunkEnd:
            return readLineEnd();
        case Part::Trailer:
            return readTrailer();
        case Part::BodyToTheEnd:
            return readBody(Part::BodyToTheEnd);
        case Part::Nothing:
            return conclude(Progress::Whole);
    }
    return false;
}

bool HttpResponseReader::readHead() {
    const qsizetype length = pending_.indexOf(headEnd);
    if (length < 0) return pending_.size() > longestHead && conclude(Progress::Broken);
    const QByteArray head = pending_.left(length);
    pending_.remove(0, length + headEnd.size());
    status_ = statusOf(head);
    if (status_ == 0) return conclude(Progress::Broken);
    if (!isInterim(status_)) chooseBody(head);
    return true;
}

void HttpResponseReader::chooseBody(const QByteArray& head) {
    const auto length = header(head, "content-length");
    if (hasNoBody(status_)) {
        part_ = Part::Nothing;
    } else if (header(head, "transfer-encoding") == "chunked") {
        part_ = Part::ChunkSize;
    } else if (length) {
        bool isNumber = false;
        remaining_ = length->toLongLong(&isNumber);
        part_ = Part::SizedBody;
        if (!isNumber || remaining_ < 0) conclude(Progress::Broken);
    } else {
        remaining_ = std::numeric_limits<qint64>::max();
        part_ = Part::BodyToTheEnd;
    }
}

/// Adds what is there of the body or chunk, and goes on with `next` once that is complete.
bool HttpResponseReader::readBody(Part next) {
    const qint64 count = std::min<qint64>(remaining_, pending_.size());
    if (count > maximumBody_ - body_.size()) return conclude(Progress::Broken);
    body_ += pending_.left(count);
    pending_.remove(0, count);
    remaining_ -= count;
    if (remaining_ > 0) return false;
    part_ = next;
    return true;
}

bool HttpResponseReader::readChunkSize() {
    const auto line = takeLine();
    if (!line) return false;
    bool isNumber = false;
    remaining_ = line->split(';').first().trimmed().toLongLong(&isNumber, 16);
    if (!isNumber || remaining_ < 0) return conclude(Progress::Broken);
    part_ = remaining_ == 0 ? Part::Trailer : Part::Chunk;
    return true;
}

bool HttpResponseReader::readLineEnd() {
    const auto line = takeLine();
    if (!line) return false;
    if (!line->isEmpty()) return conclude(Progress::Broken);
    part_ = Part::ChunkSize;
    return true;
}

bool HttpResponseReader::readTrailer() {
    const auto line = takeLine();
    if (!line) return false;
    if (line->isEmpty()) part_ = Part::Nothing;
    return true;
}

/// The next line without its end; nothing while it is not all there.
std::optional<QByteArray> HttpResponseReader::takeLine() {
    const qsizetype length = pending_.indexOf(lineEnd);
    if (length < 0) {
        if (pending_.size() > longestHead) conclude(Progress::Broken);
        return std::nullopt;
    }
    const QByteArray line = pending_.left(length);
    pending_.remove(0, length + lineEnd.size());
    return line;
}

bool HttpResponseReader::conclude(Progress progress) {
    progress_ = progress;
    pending_.clear();
    return false;
}

}  // namespace parlivo
