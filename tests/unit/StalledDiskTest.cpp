// SPDX-License-Identifier: MIT
#include "DownloaderFixture.h"
#include "engines/LocalServer.h"
#include "support/MainQueue.h"

#include <QFileInfo>

#include <dlfcn.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

namespace parlivo {
namespace {

/// A disk that does not answer: what is written to a download's file waits until the disk comes back.
class StalledDisk {
  public:
    static void stall() {
        const std::lock_guard lock(state().mutex);
        state().stalled = true;
    }
    static void comeBack() {
        const std::lock_guard lock(state().mutex);
        state().stalled = false;
        state().changed.notify_all();
    }
    /// The writers that wait.
    static int waiting() {
        const std::lock_guard lock(state().mutex);
        return state().waiting;
    }
    static void passThrough(int descriptor) {
        std::unique_lock lock(state().mutex);
        if (!state().stalled || !isDownload(descriptor)) return;
        ++state().waiting;
        state().changed.wait(lock, [] { return !state().stalled; });
        --state().waiting;
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool stalled = false;  // under mutex
        int waiting = 0;       // under mutex
    };
    static State& state() {
        static State instance;
        return instance;
    }
    static bool isDownload(int descriptor) {
        const QString link = QStringLiteral("/proc/self/fd/%1").arg(descriptor);
        return QFileInfo(link).symLinkTarget().endsWith(QStringLiteral(".parlivo-download"));
    }
};

}  // namespace
}  // namespace parlivo

/// In the place of the C library's, for this whole program.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    using Write = ssize_t (*)(int, const void*, std::size_t);
    static const Write next = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
    parlivo::StalledDisk::passThrough(descriptor);
    return next(descriptor, bytes, count);
}

namespace parlivo {
namespace {

using namespace downloads;

class StalledDiskTest : public DownloaderTest {
  protected:
    StalledDiskTest() {
        Clock::setScale(1);
        server.on(path, whole());
        StalledDisk::stall();
        start(entry());
        EXPECT_TRUE(desktop::waitFor([] { return StalledDisk::waiting() == 1; }));
    }
    ~StalledDiskTest() override {
        StalledDisk::comeBack();
        Worker::endAll(std::chrono::seconds(60));
    }
    StalledDiskTest(const StalledDiskTest&) = delete;
    StalledDiskTest& operator=(const StalledDiskTest&) = delete;
};

TEST_F(StalledDiskTest, BlocksNeitherTheEnginesNorTheMainThread) {
    const StubServer engine(0, {{"/", [](const StubServer::Request&) { return StubReply::body("alive"); }}});
    LocalServer client({.probe = QUrl(u"http://127.0.0.1:%1/"_s.arg(engine.port()))});
    for (int probe = 0; probe < 12; ++probe) EXPECT_TRUE(client.isAlive()) << probe;
    bool reached = false;
    MainQueue::async([&reached] { reached = true; });
    EXPECT_TRUE(desktop::waitFor([&reached] { return reached; }));
    EXPECT_EQ(StalledDisk::waiting(), 1) << "it is still held up itself";
    EXPECT_TRUE(ends.empty());
    StalledDisk::comeBack();
    EXPECT_TRUE(desktop::waitFor([this] { return !ends.empty(); }));
    EXPECT_TRUE(contents() == model()) << "and nothing was lost";
    EXPECT_EQ(server.requests(path).size(), 1U);
}

TEST_F(StalledDiskTest, DestroyingADownloadDoesNotWaitForIt) {
    downloader.reset();
    EXPECT_EQ(StalledDisk::waiting(), 1);
    StalledDisk::comeBack();
    EXPECT_TRUE(desktop::waitFor([] { return filesIn(Config::modelsDir()).isEmpty(); }));
    EXPECT_TRUE(ends.empty());
}

TEST_F(StalledDiskTest, IsNotWaitedForAtTheProgramsEnd) {
    Clock::interruptAll();
    Worker::endAll(std::chrono::milliseconds(1));
    EXPECT_EQ(StalledDisk::waiting(), 1);
}

}  // namespace
}  // namespace parlivo
