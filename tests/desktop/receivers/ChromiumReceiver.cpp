// SPDX-License-Identifier: MIT

// usage: receiver_chromium TITLE FILE [OPTION]...
// A browser window with a text area, whose text is kept in FILE; FILE is made when the text area has the
// focus and a key was released in it. The page comes from a small server in this program, and reports its
// text there. The options are the browser's.

#include <QCoreApplication>
#include <QProcess>
#include <QSaveFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>
#include <utility>
#include <vector>

namespace {

const char* const pageTemplate = R"(<!doctype html><meta charset="utf-8"><title>%1</title>
<textarea id="area" autofocus style="width: 95%; height: 90vh"></textarea>
<script>
const area = document.getElementById('area');
let changed = true;
// For a moment after the start the browser drops what is typed.
let hearing = false;
area.addEventListener('keyup', () => { hearing = true; });
area.addEventListener('input', () => { changed = true; });
// As editors in a page do: Tab writes instead of leaving the field.
area.addEventListener('keydown', (event) => {
  if (event.key !== 'Tab') return;
  event.preventDefault();
  document.execCommand('insertText', false, '\t');
});
async function report() {
  const focused = hearing && document.hasFocus() && document.activeElement === area;
  if (changed && focused) {
    changed = false;
    await fetch('/text', {method: 'POST', body: area.value});
  }
  setTimeout(report, 40);
}
report();
</script>)";

QByteArray response(const QByteArray& body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

void write(const QString& path, const QByteArray& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(text);
    file.commit();
}

/// One connection: requests one after the other, each with the length of its body in its head.
class Conversation : public QObject {
  public:
    Conversation(QTcpSocket* socket, QByteArray page, QString file)
        : socket_(socket), page_(std::move(page)), file_(std::move(file)) {
        connect(socket, &QTcpSocket::readyRead, this, [this] { read(); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

  private:
    void read() {
        received_ += socket_->readAll();
        while (answerOne()) {
        }
    }

    bool answerOne() {
        const qsizetype headEnd = received_.indexOf("\r\n\r\n");
        if (headEnd < 0) return false;
        const QByteArray head = received_.left(headEnd);
        const qsizetype bodyStart = headEnd + 4;
        const qsizetype length = bodyLength(head);
        if (received_.size() < bodyStart + length) return false;
        if (head.startsWith("POST")) write(file_, received_.mid(bodyStart, length));
        socket_->write(response(head.startsWith("GET / ") ? page_ : QByteArray()));
        received_.remove(0, bodyStart + length);
        return true;
    }

    static qsizetype bodyLength(const QByteArray& head) {
        for (const QByteArray& line : head.split('\n')) {
            if (line.toLower().startsWith("content-length:")) return line.mid(15).trimmed().toLongLong();
        }
        return 0;
    }

    QTcpSocket* socket_;
    QByteArray page_;
    QString file_;
    QByteArray received_;
};

QStringList browserArguments(quint16 port, const QString& profile, const QStringList& more) {
    QStringList arguments = more;
    for (const char* const flag :
         {"--no-sandbox", "--disable-gpu", "--no-first-run", "--no-default-browser-check",
          "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-quic",
          "--disable-dev-shm-usage", "--password-store=basic", "--disable-features=Translate,MediaRouter"}) {
        arguments.append(QString::fromLatin1(flag));
    }
    arguments.append(QStringLiteral("--user-data-dir=") + profile);
    arguments.append(QStringLiteral("--app=http://127.0.0.1:%1/").arg(port));
    return arguments;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) qFatal("usage: receiver_chromium TITLE FILE [OPTION]...");
    const QTemporaryDir profile;
    const QByteArray html = QString::fromLatin1(pageTemplate).arg(arguments.at(1)).toUtf8();

    std::vector<std::unique_ptr<Conversation>> conversations;
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost)) qFatal("cannot serve the page");
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
        while (auto* const socket = server.nextPendingConnection()) {
            conversations.push_back(std::make_unique<Conversation>(socket, html, arguments.at(2)));
        }
    });

    QProcess browser;
    browser.setStandardOutputFile(QProcess::nullDevice());
    browser.setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(&browser, &QProcess::finished, &browser, &QCoreApplication::quit);
    browser.start(QStringLiteral("chromium"),
                  browserArguments(server.serverPort(), profile.path(), arguments.sliced(3)));
    if (!browser.waitForStarted()) qFatal("chromium does not start");
    return QCoreApplication::exec();
}
