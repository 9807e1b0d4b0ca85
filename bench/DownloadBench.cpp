// SPDX-License-Identifier: MIT

/// Measures a large download beside curl's of the same file, in turns: the time, the memory it takes and how
/// long it keeps the main thread from other things.

#include "Table.h"
#include "models/Downloader.h"
#include "settings/Config.h"
#include "support/FakePlatform.h"
#include "support/Worker.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

namespace parlivo::bench {
namespace {

using std::chrono::steady_clock;

constexpr qint64 fileSize = 1 << 30;
constexpr int rounds = 10;
constexpr double allowedShare = 1 / 0.8;  // of curl's time, for 80 % of its rate

double milliseconds(steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

/// Sends the file to everyone who asks for anything.
class Server {
  public:
    /// In a process of its own, so that its memory and time are not ours. Before any thread is started.
    Server() : listener_(listenAnywhere()), port_(portOf(listener_)), process_(fork()) {
        require(process_ >= 0, "no process for the server");
        if (process_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            serve();
        }
    }
    ~Server() {
        kill(process_, SIGKILL);
        close(listener_);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    QString url() const { return QStringLiteral("http://127.0.0.1:%1/modello.bin").arg(port_); }

  private:
    static int listenAnywhere() {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool bound = bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                           listen(listener, 8) == 0;
        require(bound, "no port for the server");
        return listener;
    }
    static int portOf(int listener) {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    [[noreturn]] void serve() const {
        const std::string head =
            "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(fileSize) +
            "\r\n\r\n";
        const std::vector<char> piece(1 << 20, 'x');
        while (true) {
            const int client = accept(listener_, nullptr, nullptr);
            std::array<char, 4096> request{};
            if (recv(client, request.data(), request.size(), 0) > 0) {
                send(client, head.data(), head.size(), MSG_NOSIGNAL);
                for (qint64 sent = 0; sent < fileSize;) {
                    const auto wanted =
                        std::min<std::size_t>(piece.size(), static_cast<std::size_t>(fileSize - sent));
                    const ssize_t count = send(client, piece.data(), wanted, MSG_NOSIGNAL);
                    if (count <= 0) break;
                    sent += count;
                }
            }
            close(client);
        }
    }

    const int listener_;
    const int port_;
    const pid_t process_;
};

double residentMegabytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    require(file.open(QIODevice::ReadOnly), "no /proc/self/statm");
    return file.readAll().split(' ').at(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) /
           (1 << 20);
}

/// The longest stretch in which the main thread's loop did not come back to wait.
class BusyWatch {
  public:
    BusyWatch() {
        auto* dispatcher = QAbstractEventDispatcher::instance();
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &context_,
                         [this] { awake_ = steady_clock::now(); });
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &context_, [this] {
            longest_ = std::max(longest_, milliseconds(steady_clock::now() - awake_));
        });
    }
    double longest() const { return longest_; }

  private:
    QObject context_;
    steady_clock::time_point awake_ = steady_clock::now();
    double longest_ = 0;
};

struct Figures {
    double bytesArrived = 0;  ///< ms
    double inPlace = 0;       ///< ms
    double memory = 0;        ///< MB above that before
    double busy = 0;          ///< ms
};

/// In bytes; 0 before there is one.
qint64 sizeOfDownload() {
    const auto files = QDir(Config::modelsDir())
                           .entryInfoList({QStringLiteral("*.parlivo-download")}, QDir::Files | QDir::Hidden);
    return files.isEmpty() ? 0 : files.first().size();
}

Figures download(const QString& url) {
    Figures figures;
    const double idle = residentMegabytes();
    QEventLoop loop;
    QTimer sampler;
    sampler.setTimerType(Qt::PreciseTimer);
    sampler.start(2);
    Downloader downloader({.id = {},
                           .label = {},
                           .detail = {},
                           .fileName = QStringLiteral("modello.bin"),
                           .url = QUrl(url),
                           .expectedSize = fileSize});
    const auto begin = steady_clock::now();
    // Progress is told at intervals that are too long for this.
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        figures.memory = std::max(figures.memory, residentMegabytes() - idle);
        if (figures.bytesArrived == 0 && sizeOfDownload() == fileSize)
            figures.bytesArrived = milliseconds(steady_clock::now() - begin);
    });
    downloader.onCompletion = [&](const std::optional<Error>& error) {
        require(!error, "the download failed");
        figures.inPlace = milliseconds(steady_clock::now() - begin);
        if (figures.bytesArrived == 0) figures.bytesArrived = figures.inPlace;
        loop.quit();
    };
    const BusyWatch watch;
    downloader.start();
    loop.exec();
    figures.busy = watch.longest();
    return figures;
}

double timeOf(const QString& program, const QStringList& arguments) {
    const auto begin = steady_clock::now();
    require(QProcess::execute(program, arguments) == 0, "curl, dd or sync failed");
    return milliseconds(steady_clock::now() - begin);
}

int measure(const Server& server) {
    const QString file = Config::modelsDir() + QStringLiteral("/modello.bin");
    const QString other = Config::modelsDir() + QStringLiteral("/curl.bin");
    QDir().mkpath(Config::modelsDir());
    Table table("A download of 1 GiB from this machine");
    Samples curl;
    Samples curlOnDisk;
    Samples disk;
    Samples arrived;
    Samples inPlace;
    Samples share;
    Samples memory;
    Samples busy;
    for (int round = 0; round <= rounds; ++round) {
        const double bytes =
            timeOf(QStringLiteral("curl"),
                   {QStringLiteral("--silent"), QStringLiteral("--output"), other, server.url()});
        const double onDisk = bytes + timeOf(QStringLiteral("sync"), {other});
        QFile::remove(other);
        const Figures figures = download(server.url());
        QFile::remove(file);
        const double written =
            timeOf(QStringLiteral("dd"), {QStringLiteral("if=/dev/zero"), QStringLiteral("of=") + other,
                                          QStringLiteral("bs=1M"), QStringLiteral("count=1024"),
                                          QStringLiteral("conv=fsync"), QStringLiteral("status=none")});
        QFile::remove(other);
        if (round == 0) continue;  // once for what is done once only
        curl.add(bytes);
        curlOnDisk.add(onDisk);
        disk.add(written);
        arrived.add(figures.bytesArrived);
        inPlace.add(figures.inPlace);
        share.add(figures.bytesArrived / bytes);
        memory.add(figures.memory);
        busy.add(figures.busy);
    }
    table.row("curl: all bytes arrived", "ms", curl, {});
    table.row("Parlivo: all bytes arrived", "ms", arrived, {});
    table.row("curl, then sync: safe on the disk", "ms", curlOnDisk, {});
    table.row("Parlivo: safe on the disk, checked and in its place", "ms", inPlace, {});
    table.row("the floor of that: as much written by dd, no network", "ms", disk, {});
    table.row("Parlivo's time in parts of curl's (80 % of its rate)", "", share, allowedShare);
    table.row("memory above the idle program's", "MB", memory, 25);
    table.row("longest stretch that the main thread was busy", "ms", busy, 8);
    return table.status();
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    using namespace parlivo;
    try {
        const bench::Server server;
        const QCoreApplication application(argc, argv);
        FakePlatform::install();
        const int status = bench::measure(server);
        Worker::endAll();
        FakePlatform::uninstall();
        return status;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "download_bench: %s\n", error.what());
        return 2;
    }
}
