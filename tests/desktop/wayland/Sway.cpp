// SPDX-License-Identifier: MIT
#include "desktop/wayland/Sway.h"

#include "support/Error.h"
#include "support/Waiting.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <csignal>
#include <functional>

namespace parlivo::desktop::sway {

namespace {

[[noreturn]] void fail(const QString& what) {
    throw Error(QStringLiteral("desktop test"), 5, what);
}

/// The window tree, walked from the root.
void forEachWindow(const QJsonObject& node, const std::function<void(const QJsonObject&)>& visit) {
    if (node.value(QStringLiteral("app_id")).isString()) visit(node);
    for (const char* list : {"nodes", "floating_nodes"}) {
        const QJsonArray children = node.value(QLatin1String(list)).toArray();
        for (const auto& child : children) forEachWindow(child.toObject(), visit);
    }
}

QByteArray run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!waitFor([&] { return process.state() == QProcess::NotRunning; })) fail(program);
    return process.readAllStandardOutput();
}

QJsonObject tree() {
    const QByteArray answer = run(QStringLiteral("swaymsg"),
                                  {QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_tree")});
    return QJsonDocument::fromJson(answer).object();
}

}  // namespace

QStringList applications() {
    QStringList ids;
    forEachWindow(tree(), [&](const QJsonObject& window) {
        ids.append(window.value(QStringLiteral("app_id")).toString());
    });
    return ids;
}

QString focusedApplication() {
    QString focused;
    forEachWindow(tree(), [&](const QJsonObject& window) {
        if (window.value(QStringLiteral("focused")).toBool())
            focused = window.value(QStringLiteral("app_id")).toString();
    });
    return focused;
}

QStringList titles() {
    QStringList all;
    forEachWindow(tree(), [&](const QJsonObject& window) {
        all.append(window.value(QStringLiteral("name")).toString());
    });
    return all;
}

QString focusedTitle() {
    QString focused;
    forEachWindow(tree(), [&](const QJsonObject& window) {
        if (window.value(QStringLiteral("focused")).toBool())
            focused = window.value(QStringLiteral("name")).toString();
    });
    return focused;
}

bool accepts(const QString& command) {
    const QByteArray answer =
        run(QStringLiteral("swaymsg"), {QStringLiteral("-r"), QStringLiteral("--"), command});
    const QJsonArray results = QJsonDocument::fromJson(answer).array();
    return !results.isEmpty() && std::ranges::all_of(results, [](const QJsonValue& result) {
        return result.toObject().value(QStringLiteral("success")).toBool();
    });
}

void command(const QString& command) {
    if (!accepts(command)) fail(command);
}

void kill() {
    QFile file(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/desktop/sway.pid"));
    if (!file.open(QIODevice::ReadOnly) || ::kill(file.readAll().trimmed().toInt(), SIGKILL) != 0)
        fail(QStringLiteral("no process of sway's"));
}

QImage screenshot() {
    return QImage::fromData(
        run(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"), QStringLiteral("-")}));
}

QByteArray clipboard(const QStringList& options) {
    return run(QStringLiteral("wl-paste"), QStringList{QStringLiteral("--no-newline")} + options);
}

void copy(const QByteArray& content, const QStringList& options) {
    QProcess process;
    process.start(QStringLiteral("wl-copy"), options);
    process.write(content);
    process.closeWriteChannel();
    if (!process.waitForFinished() || process.exitCode() != 0) fail(QStringLiteral("wl-copy"));
}

}  // namespace parlivo::desktop::sway
