// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

/// Where the engines of ours listen: on the loopback interface, at fixed ports.
namespace parlivo::EngineAddress {

inline constexpr quint16 whisperPort = 8765;
inline constexpr quint16 llamaPort = 8766;

/// `path` begins with a slash.
inline QUrl url(quint16 port, const QString& path) {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port).arg(path));
}

}  // namespace parlivo::EngineAddress
