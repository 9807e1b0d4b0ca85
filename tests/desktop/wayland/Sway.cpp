// SPDX-License-Identifier: MIT
#include "desktop/wayland/Sway.h"

#include "support/Error.h"
#include "support/Waiting.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

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

Terminal::Terminal() {
    process_.start(QStringLiteral("foot"),
                   {QStringLiteral("--app-id"), application(), QStringLiteral("sh"), QStringLiteral("-c"),
                    QStringLiteral("exec cat >'%1'").arg(folder_.filePath(QStringLiteral("received")))});
    if (!waitFor([] { return focusedApplication() == application(); })) fail(QStringLiteral("no terminal"));
}

Terminal::~Terminal() {
    process_.kill();
    process_.waitForFinished();
}

QString Terminal::application() {
    return QStringLiteral("receiver");
}

QByteArray Terminal::received() const {
    QFile file(folder_.filePath(QStringLiteral("received")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace parlivo::desktop::sway
