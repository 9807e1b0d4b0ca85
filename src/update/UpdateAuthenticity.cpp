// SPDX-License-Identifier: MIT
#include "update/UpdateAuthenticity.h"

#include "support/Error.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>

#include <sodium.h>

#include <cerrno>
#include <filesystem>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

const unsigned char* bytes(const QByteArray& array) {
    return reinterpret_cast<const unsigned char*>(array.constData());
}

Error corrupted(const QString& description) {
    return {ErrorCode::UpdateCorrupted, description};
}

qint64 sizeOf(const QString& archive) {
    std::error_code error;
    const auto size = std::filesystem::file_size(QFile::encodeName(archive).toStdString(), error);
    if (error) throw Error::system(error.value(), archive);
    return static_cast<qint64>(size);
}

/// In lower-case hexadecimal digits.
QByteArray sha256Of(const QString& archive) {
    QFile file(archive);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) throw Error::system(EIO, archive);
    return hash.result().toHex();
}

bool isSignedBy(const UpdateKey& key, const QByteArray& text, const QByteArray& signature) {
    return sodium_init() >= 0 && key.size() == crypto_sign_PUBLICKEYBYTES &&
           signature.size() == crypto_sign_BYTES &&
           crypto_sign_verify_detached(bytes(signature), bytes(text),
                                       static_cast<unsigned long long>(text.size()), bytes(key)) == 0;
}

/// https counts more than http, and http more than what is no web address at all.
int safety(const QUrl& address) {
    if (address.scheme() == u"https"_s) return 2;
    return address.scheme() == u"http"_s ? 1 : 0;
}

}  // namespace

QByteArray signedText(const QString& version, qint64 size, const QByteArray& sha256) {
    return "parlivo-update\n" + version.toUtf8() + '\n' + QByteArray::number(size) + '\n' + sha256 + '\n';
}

bool isSafeAddress(const QUrl& address, const QUrl& site) {
    return safety(address) > 0 && safety(address) >= safety(site);
}

void checkArchive(const QString& archive, const FeedEntry& entry, const std::optional<UpdateKey>& key) {
    const qint64 size = sizeOf(archive);
    if (size != entry.size)
        throw corrupted(QCoreApplication::translate("parlivo::UpdateAuthenticity",
                                                    "Aggiornamento corrotto (dimensione inattesa)"));
    if (key && entry.signature.isEmpty())
        throw corrupted(QCoreApplication::translate("parlivo::UpdateAuthenticity",
                                                    "Aggiornamento non autentico (firma mancante)"));
    if (!key && !entry.sha256) return;
    const QByteArray sha256 = sha256Of(archive);
    if (entry.sha256 && entry.sha256->toLatin1().toLower() != sha256)
        throw corrupted(QCoreApplication::translate("parlivo::UpdateAuthenticity",
                                                    "Aggiornamento corrotto (contenuto inatteso)"));
    if (key && !isSignedBy(*key, signedText(entry.version, size, sha256), entry.signature))
        throw corrupted(QCoreApplication::translate("parlivo::UpdateAuthenticity",
                                                    "Aggiornamento non autentico (firma non valida)"));
}

}  // namespace parlivo
