#pragma once

#include <QByteArray>

#include <optional>

namespace parlivo {

/// Reads one HTTP/1.1 response, with its body framed in any way that RFC 9112 allows (a stated length,
/// chunks, or the end of the connection), from pieces cut anywhere.
class HttpResponseReader {
  public:
    enum class Progress {
        More,    ///< it goes on
        Whole,   ///< all of it is there
        Broken,  ///< no HTTP response, or one that ended too soon, or a body beyond the limit
    };

    /// `maximumBody` in bytes.
    explicit HttpResponseReader(qint64 maximumBody) : maximumBody_(maximumBody) {}

    /// The next bytes.
    Progress take(const QByteArray& bytes);
    /// No more bytes will come.
    Progress end();

    /// Once it is whole.
    int status() const { return status_; }
    const QByteArray& body() const { return body_; }

  private:
    enum class Part { Head, SizedBody, ChunkSize, Chunk, ChunkEnd, Trailer, BodyToTheEnd, Nothing };

    bool advance();
    bool readHead();
    bool readBody(Part next);
    bool readChunkSize();
    bool readLineEnd();
    bool readTrailer();
    void chooseBody(const QByteArray& head);
    std::optional<QByteArray> takeLine();
    bool conclude(Progress progress);

    const qint64 maximumBody_;
    Progress progress_ = Progress::More;
    Part part_ = Part::Head;
    QByteArray pending_;
    qint64 remaining_ = 0;  // of the body or of the chunk
    int status_ = 0;
    QByteArray body_;
};

}  // namespace parlivo
