// SPDX-License-Identifier: MIT
#pragma once

#include "models/Downloader.h"
#include "settings/Config.h"
#include "support/Errors.h"
#include "support/PlatformTest.h"
#include "support/StubServer.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>

#include <optional>
#include <vector>

/// One model file, a server for it, and what becomes of it in the models folder.
namespace parlivo::downloads {

using namespace Qt::StringLiterals;

inline constexpr qint64 fileSize = 3'000'000;
inline constexpr qint64 percent = fileSize / 100;
inline const QString fileName = u"modello.bin"_s;
inline const QByteArray path = "/repo/resolve/main/modello.bin";

/// A file no two parts of which are alike.
inline QByteArray makeModel(qint64 size = fileSize) {
    QByteArray model(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : model) {
        state = state * 1664525 + 1013904223;  // any generator will do
        byte = static_cast<char>(state >> 24);
    }
    return model;
}

inline const QByteArray& model() {
    static const QByteArray bytes = makeModel();
    return bytes;
}

inline StubReply whole(const QByteArray& body = model()) {
    return StubReply::body(body, 200, "application/octet-stream");
}

inline StubReply cutAt(qint64 bytes) {
    return StubReply::cutOff(model().left(bytes), fileSize);
}

/// Without a length: the end of the connection is the end of the file.
inline StubReply unmeasured(const QByteArray& body) {
    return {"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + body, StubReply::Manner::ThenClose, {}};
}

class DownloaderTest : public PlatformTest {
  protected:
    DownloaderTest() {
        // The 3 s between two tries, and the minute without any progress.
        Clock::setScale(0.02);
    }

    ModelCatalog::Entry entry(qint64 expectedSize = fileSize) const {
        return {.id = u"best"_s,
                .label = u"Precisa"_s,
                .detail = {},
                .fileName = fileName,
                .url = QUrl(u"http://127.0.0.1:%1"_s.arg(server.port()) + QString::fromLatin1(path)),
                .expectedSize = expectedSize};
    }

    struct Progress {
        double fraction;
        qint64 written;
        qint64 total;
    };

    void start(const ModelCatalog::Entry& wanted) {
        downloader.emplace(wanted);
        downloader->onProgress = [this](double fraction, qint64 written, qint64 total) {
            progress.push_back({fraction, written, total});
        };
        downloader->onCompletion = [this](const std::optional<Error>& error) { ends.push_back(error); };
        downloader->start();
    }
    /// True when the file came; a failure's description is in `failure()`.
    bool fetch(const ModelCatalog::Entry& wanted) {
        start(wanted);
        EXPECT_TRUE(desktop::waitFor([this] { return !ends.empty(); })) << "no end was told";
        return !ends.empty() && !ends.back();
    }
    bool fetch() { return fetch(entry()); }
    QString failure() const { return ends.back() ? ends.back()->localizedDescription() : QString(); }

    static QString file() { return Config::modelsDir() + u'/' + fileName; }
    static QByteArray contents() {
        QFile opened(file());
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(missing)");
    }
    static QStringList filesIn(const QString& folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    static QStringList retries(int count, const QString& reason) {
        QStringList lines(u"download avviato: "_s + fileName);
        for (int i = 0; i < count; ++i) {
            lines += u"download "_s + fileName + u" fallito ("_s + reason + u"), retry"_s;
            lines += u"download avviato: "_s + fileName;
        }
        return lines;
    }
    void expectRefused(const QString& reason) { expectRefused(reason, entry()); }
    void expectRefused(const QString& reason, const ModelCatalog::Entry& wanted) {
        EXPECT_FALSE(fetch(wanted));
        EXPECT_EQ(failure(), reason);
        EXPECT_TRUE(ends.back() && isError(*ends.back(), ErrorCode::IncompleteDownload));
        EXPECT_EQ(logged(), QStringList({u"download avviato: "_s + fileName,
                                         u"errore salvataggio "_s + fileName + u": "_s + reason}));
        expectNothingLeft();
        EXPECT_EQ(ends.size(), 1U);
    }
    void expectNothingLeft() const {
        EXPECT_EQ(filesIn(Config::modelsDir()), QStringList());
        EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
    }

    StubServer server;
    std::optional<Downloader> downloader;
    std::vector<Progress> progress;
    std::vector<std::optional<Error>> ends;
};

}  // namespace parlivo::downloads
