#include "update/ZipNames.h"

#include <QFile>
#include <QList>
#include <QtEndian>

#include <algorithm>
#include <cstddef>
#include <span>

namespace parlivo {

namespace {

using Bytes = std::span<const char>;

constexpr quint32 endSignature = 0x06054b50;
constexpr std::size_t endLength = 22;
constexpr std::size_t longestComment = 65535;
constexpr quint32 entrySignature = 0x02014b50;
constexpr std::size_t entryLength = 46;

template <typename Number>
Number numberAt(Bytes bytes, std::size_t offset) {
    return qFromLittleEndian<Number>(bytes.subspan(offset).data());
}

/// The record at the archive's end, before a comment that may follow it.
std::optional<Bytes> endRecord(Bytes zip) {
    if (zip.size() < endLength) return std::nullopt;
    const std::size_t last = zip.size() - endLength;
    const std::size_t first = last - std::min(last, longestComment);
    for (std::size_t at = last + 1; at-- > first;) {
        if (numberAt<quint32>(zip, at) == endSignature) return zip.subspan(at);
    }
    return std::nullopt;
}

std::optional<std::vector<QByteArray>> namesIn(Bytes zip) {
    const auto end = endRecord(zip);
    if (!end) return std::nullopt;
    const auto count = numberAt<quint16>(*end, 10);
    std::size_t at = numberAt<quint32>(*end, 16);
    std::vector<QByteArray> names;
    for (quint16 i = 0; i < count; ++i) {
        if (at > zip.size() || zip.size() - at < entryLength) return std::nullopt;
        const Bytes entry = zip.subspan(at);
        if (numberAt<quint32>(entry, 0) != entrySignature) return std::nullopt;
        const std::size_t nameLength = numberAt<quint16>(entry, 28);
        if (entry.size() - entryLength < nameLength) return std::nullopt;
        const Bytes name = entry.subspan(entryLength, nameLength);
        names.emplace_back(name.data(), static_cast<qsizetype>(name.size()));
        at += entryLength + nameLength + numberAt<quint16>(entry, 30) + numberAt<quint16>(entry, 32);
    }
    return names;
}

}  // namespace

std::optional<std::vector<QByteArray>> zipNames(const QString& archive) {
    QFile file(archive);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const uchar* mapped = file.map(0, file.size());
    if (mapped == nullptr) return std::nullopt;
    const auto* bytes = reinterpret_cast<const char*>(mapped);
    return namesIn(Bytes(bytes, static_cast<std::size_t>(file.size())));
}

bool staysInFolder(const QByteArray& name) {
    return !name.startsWith('/') && !name.split('/').contains("..");
}

}  // namespace parlivo
