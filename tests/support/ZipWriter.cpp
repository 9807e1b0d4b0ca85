// SPDX-License-Identifier: MIT
#include "support/ZipWriter.h"

#include <QtEndian>

#include <cstring>

namespace parlivo {

namespace {

template <typename Number>
QByteArray number(Number value) {
    const Number little = qToLittleEndian(value);
    QByteArray bytes(sizeof little, '\0');
    std::memcpy(bytes.data(), &little, sizeof little);
    return bytes;
}

/// CRC-32 of ISO 3309.
quint32 checksum(const QByteArray& bytes) {
    quint32 sum = ~0U;
    for (const char byte : bytes) {
        sum ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
    }
    return ~sum;
}

/// From the version needed to the length of the extra field: the same in both headers.
QByteArray commonFields(const ZipEntry& entry) {
    const auto length = static_cast<quint32>(entry.content.size());
    constexpr quint16 noFlags = 0;
    constexpr quint16 stored = 0;
    constexpr quint16 noon = 12 << 11;
    constexpr quint16 firstOfMay2026 = (2026 - 1980) << 9 | 5 << 5 | 1;
    return number<quint16>(10) + number(noFlags) + number(stored) + number(noon) + number(firstOfMay2026) +
           number(checksum(entry.content)) + number(length) + number(length) +
           number(static_cast<quint16>(entry.name.size())) + number(static_cast<quint16>(entry.extra.size()));
}

}  // namespace

QByteArray unicodePath(const QByteArray& name, const QByteArray& other) {
    constexpr char version = 1;
    const QByteArray field = version + number(checksum(name)) + other;
    return number<quint16>(0x7075) + number(static_cast<quint16>(field.size())) + field;
}

QByteArray zipOf(const std::vector<ZipEntry>& entries) {
    QByteArray files;
    QByteArray directory;
    for (const ZipEntry& entry : entries) {
        constexpr quint16 madeByUnix = 0x031e;
        directory += number<quint32>(0x02014b50) + number(madeByUnix) + commonFields(entry) +
                     number<quint16>(0) + number<quint16>(0) + number<quint16>(0) +
                     number(static_cast<quint32>(entry.mode) << 16) +
                     number(static_cast<quint32>(files.size())) + entry.name + entry.extra;
        files += number<quint32>(0x04034b50) + commonFields(entry) + entry.name + entry.extra + entry.content;
    }
    const auto count = number(static_cast<quint16>(entries.size()));
    return files + directory + number<quint32>(0x06054b50) + number<quint32>(0) + count + count +
           number(static_cast<quint32>(directory.size())) + number(static_cast<quint32>(files.size())) +
           number<quint16>(0);
}

}  // namespace parlivo
