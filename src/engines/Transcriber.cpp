// SPDX-License-Identifier: MIT
#include "engines/Transcriber.h"

#include "engines/EngineAddress.h"
#include "engines/EngineFiles.h"
#include "engines/EngineReplies.h"
#include "engines/LocalServer.h"
#include "models/ModelCatalog.h"
#include "models/ModelPaths.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"
#include "support/Text.h"
#include "support/Uuid.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace parlivo::Transcriber {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Transcriber)
};

using std::chrono::seconds;

constexpr seconds startLimit{30};
constexpr seconds requestTimeout{120};
constexpr seconds replyLimit{125};

LocalServer& server() {
    static LocalServer instance({EngineAddress::url(EngineAddress::whisperPort, QStringLiteral("/")),
                                 LocalServer::Accepts::AnyStatus, std::chrono::milliseconds(300)});
    return instance;
}

ChildProcess::Program program(const QString& model) {
    return {Config::whisperServer(),
            {QStringLiteral("-m"), model, QStringLiteral("--host"), QStringLiteral("127.0.0.1"),
             QStringLiteral("--port"), QString::number(EngineAddress::whisperPort), QStringLiteral("-bs"),
             QStringLiteral("5")}};
}

/// What the recogniser is told to expect: the language's manners, and the user's own terms.
QString prompt(const QString& language) {
    QString text;
    if (language == QLatin1String("it")) {
        text = QStringLiteral("Trascrizione in italiano, con punteggiatura corretta.");
    }
    const QStringList terms = Config::dictionary();
    if (!terms.isEmpty()) {
        text += QStringLiteral(" Glossario: ") + terms.join(QStringLiteral(", ")) + QLatin1Char('.');
    }
    return Text::trimmedBlanks(text);
}

/// The parts of a multipart/form-data body (RFC 7578) before and after the recording itself. Not through
/// libcurl, which chooses the boundary itself: ours is stated.
class Form {
  public:
    explicit Form(const QByteArray& boundary) : delimiter_("--" + boundary) {}

    QByteArray fileHead() const {
        return delimiter_ +
               "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
               "Content-Type: audio/wav\r\n\r\n";
    }
    QByteArray field(const QByteArray& name, const QString& value) const {
        return delimiter_ + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" +
               value.toUtf8() + "\r\n";
    }
    QByteArray closing() const { return delimiter_ + "--\r\n"; }

  private:
    QByteArray delimiter_;
};

QByteArray fieldsAfterFile(const Form& form) {
    const QString language = Config::get(Settings::language);
    const QString promptText = prompt(language);
    QByteArray fields = "\r\n" + form.field("language", language);
    if (!promptText.isEmpty()) fields += form.field("prompt", promptText);
    return fields + form.field("response_format", QStringLiteral("json")) + form.closing();
}

/// head + the file's bytes + tail. A long recording is copied once, from the file to its place.
QByteArray enclose(const QByteArray& head, const QString& path, const QByteArray& tail) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) throw Error::file(file);
    QByteArray body = head;
    body.reserve(head.size() + file.size() + tail.size());
    body.resize(head.size() + file.size());
    const qint64 count = file.read(body.data() + head.size(), file.size());
    if (count < 0) throw Error::file(file);
    body.truncate(head.size() + count);
    return body += tail;
}

/// Names the model or the engine's file where that is the reason.
[[noreturn]] void failToRespond() {
    auto fault = QFileInfo(Config::recogniserInUse()).isFile()
                     ? std::nullopt
                     : ModelCatalog::faultOf(Config::chosenRecogniser());
    if (!fault) fault = engineFault(Config::whisperServer());
    if (fault) Log::info(fault->detail);
    throw Error(ErrorCode::WhisperNotResponding,
                fault ? fault->message : Texts::tr("whisper-server non risponde"));
}

HttpRequest inference(const QString& wav) {
    const QByteArray boundary = "Parlivo-" + freshUuid().toLatin1();
    const Form form(boundary);
    HttpRequest request;
    request.url = EngineAddress::url(EngineAddress::whisperPort, QStringLiteral("/inference"));
    request.method = "POST";
    request.headers = {{"Content-Type", "multipart/form-data; boundary=" + boundary}};
    request.body = enclose(form.fileHead(), wav, fieldsAfterFile(form));
    request.timeout = requestTimeout;
    request.limit = replyLimit;
    return request;
}

}  // namespace

void ensureServer() {
    if (server().isAlive()) return;
    const QString model = Config::recogniserInUse();
    if (server().isLoading(model)) return;
    try {
        server().start(program(model), model);
    } catch (const Error& error) {
        Platform::current().systemLog().write(
            QStringLiteral("Parlivo: impossibile avviare whisper-server: ") + error.localizedDescription());
    }
}

QString transcribe(const QString& wav) {
    ensureServer();
    if (!server().waitUntilAlive(startLimit)) failToRespond();
    const auto reply = server().ask(inference(wav));
    const auto text = reply ? EngineReplies::recognisedText(*reply) : std::nullopt;
    if (!text) {
        throw Error(ErrorCode::WhisperReplyInvalid, Texts::tr("risposta whisper-server non valida"));
    }
    return *text;
}

void stopServer() {
    server().terminate();
}

}  // namespace parlivo::Transcriber
