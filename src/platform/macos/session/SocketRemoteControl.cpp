// SPDX-License-Identifier: MIT
#include "platform/macos/session/SocketRemoteControl.h"

#include "platform/macos/session/LocalSocket.h"
#include "support/OwnerOnly.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace parlivo {

namespace {

struct Word {
    RemoteCommand command;
    const char* word;
};

constexpr std::array commandWords{
    Word{RemoteCommand::Press, "Press"},
    Word{RemoteCommand::Release, "Release"},
    Word{RemoteCommand::Toggle, "Toggle"},
    Word{RemoteCommand::ShowSettings, "ShowSettings"},
    Word{RemoteCommand::ShowFeedback, "ShowFeedback"},
    Word{RemoteCommand::Quit, "Quit"},
};

/// Longer than any request: whoever sends more means something else.
constexpr qsizetype longestRequest = 64;

QByteArray wordOf(RemoteCommand command) {
    for (const Word& row : commandWords)
        if (row.command == command) return row.word;
    return {};
}

std::optional<RemoteCommand> commandOf(const QByteArray& word) {
    for (const Word& row : commandWords)
        if (word == row.word) return row.command;
    return std::nullopt;
}

QString socketIn(const QString& folder) {
    return folder + QStringLiteral("/control");
}

QString lockIn(const QString& folder) {
    return folder + QStringLiteral("/control.lock");
}

}  // namespace

/// Answers for the running program.
class SocketRemoteControl::Server {
  public:
    Server(const QString& path, RemoteTarget target)
        : path_(path), target_(std::move(target)), listener_(LocalSocket::listenAt(path)) {
        if (!listener_) return;
        notifier_.setSocket(listener_.get());
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { accept(); });
        notifier_.setEnabled(true);
    }
    ~Server() {
        while (!clients_.empty()) drop(clients_.begin()->first);
        if (listener_) QFile::remove(path_);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void announce(const QString& state) {
        std::vector<int> watchers;
        for (const auto& [descriptor, client] : clients_)
            if (client.watches) watchers.push_back(descriptor);
        for (const int watcher : watchers) reply(watcher, state.toUtf8());
    }

  private:
    struct Client {
        UniqueFd descriptor;
        std::unique_ptr<QSocketNotifier> notifier;
        QByteArray request;
        bool watches = false;
    };

    void accept() {
        Client client;
        client.descriptor = LocalSocket::acceptFrom(listener_.get());
        if (!client.descriptor) return;
        const int descriptor = client.descriptor.get();
        client.notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(client.notifier.get(), &QSocketNotifier::activated, client.notifier.get(),
                         [this, descriptor] { readFrom(descriptor); });
        clients_[descriptor] = std::move(client);
    }

    void drop(int descriptor) {
        // The notifier may be the one whose signal is being served.
        clients_.at(descriptor).notifier->setEnabled(false);
        clients_.at(descriptor).notifier.release()->deleteLater();
        clients_.erase(descriptor);
    }

    void readFrom(int descriptor) {
        std::array<char, longestRequest> bytes{};
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        Client& client = clients_.at(descriptor);
        if (count <= 0 || client.watches) {
            if (count <= 0) drop(descriptor);
            return;
        }
        client.request.append(bytes.data(), static_cast<qsizetype>(count));
        const auto end = client.request.indexOf('\n');
        if (end < 0 && client.request.size() < longestRequest) return;
        answer(descriptor, client.request.left(std::max(end, decltype(end){0})));
    }

    void answer(int descriptor, const QByteArray& request) {
        if (request == "Watch") {
            clients_.at(descriptor).watches = true;
            reply(descriptor, target_.state().toUtf8());
            return;
        }
        const auto command = commandOf(request);
        // Before it is performed: "Quit" may end this server.
        reply(descriptor, command ? QByteArray("done") : property(request));
        if (clients_.contains(descriptor)) drop(descriptor);
        if (command) target_.perform(*command);
    }

    QByteArray property(const QByteArray& request) const {
        if (request == "State") return target_.state().toUtf8();
        if (request == "StatusText") return target_.statusText().toUtf8();
        if (request == "Version") return target_.version().toUtf8();
        return "unknown";
    }

    /// A line is far shorter than a socket's buffer: one that does not take it belongs to nobody who reads.
    void reply(int descriptor, QByteArray line) {
        line.replace('\n', ' ').append('\n');
        const ssize_t sent = write(descriptor, line.constData(), static_cast<std::size_t>(line.size()));
        if (sent != line.size()) drop(descriptor);
    }

    const QString path_;
    const RemoteTarget target_;
    const UniqueFd listener_;
    QSocketNotifier notifier_{QSocketNotifier::Read};
    std::map<int, Client> clients_;
};

SocketRemoteControl::SocketRemoteControl(const QString& folder) : folder_(folder) {
    // Whoever asks may be gone before the answer.
    std::signal(SIGPIPE, SIG_IGN);
}

SocketRemoteControl::~SocketRemoteControl() = default;

RemoteControl::Instance SocketRemoteControl::registerInstance() {
    if (lock_) return Instance::Only;
    QDir().mkpath(folder_);
    UniqueFd file(open(QFile::encodeName(lockIn(folder_)).constData(),
                       O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerOnlyMode));
    // Better two instances than none.
    if (!file) return Instance::Only;
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) return Instance::Another;
    lock_ = std::move(file);
    return Instance::Only;
}

void SocketRemoteControl::serve(RemoteTarget target) {
    server_ = std::make_unique<Server>(socketIn(folder_), std::move(target));
}

void SocketRemoteControl::announceState(const QString& state) {
    if (server_) server_->announce(state);
}

RemoteControl::Delivery SocketRemoteControl::send(RemoteCommand command) {
    const auto answer = LocalSocket::ask(socketIn(folder_), wordOf(command), replyTimeout);
    if (answer == "done") return Delivery::Done;
    if (!answer && (errno == ENOENT || errno == ECONNREFUSED)) return Delivery::NoInstance;
    if (!answer && errno == ETIMEDOUT) return Delivery::NoAnswer;
    return answer ? Delivery::Refused : Delivery::Unavailable;
}

QString SocketRemoteControl::whyUnavailable() const {
    return QCoreApplication::translate("parlivo::SocketRemoteControl",
                                       "il canale di controllo in %1 non si apre")
        .arg(folder_);
}

}  // namespace parlivo
