#pragma once

#include "support/Http.h"
#include "support/HttpResponseReader.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <functional>
#include <optional>

namespace parlivo {

/// One request to a server on this machine and its reply, over a connection that is opened for it and closed
/// afterwards. No proxy, no redirection, never a second time.
///
/// Qt's own client writes a request in pieces, and the system holds the last one back until the server has
/// acknowledged the first, which may take it 40 ms.
class HttpConversation : public QObject {
  public:
    /// Nothing when no whole reply came.
    using Completion = std::function<void(std::optional<HttpReply> reply)>;

    /// Begins at once, on the thread of `parent`, the current one. `completion` runs there, once; after that,
    /// the conversation deletes itself. Deleting it before calls the request off.
    HttpConversation(const HttpRequest& request, Completion completion, QObject* parent);

  private:
    void begin(const QByteArray& head);
    void speakOn();
    void listen();
    void finish(HttpResponseReader::Progress progress);

    QTcpSocket socket_;
    const QByteArray body_;
    qsizetype handedOver_ = 0;  ///< how much of the body the socket was given
    QTimer silence_;
    HttpResponseReader reader_;
    Completion completion_;
};

}  // namespace parlivo
