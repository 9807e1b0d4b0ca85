// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <QStorageInfo>

namespace parlivo::desktop {
namespace {

/// Leaves so many bytes free on the disk of the temporary files, as long as it lives.
class Ballast {
  public:
    explicit Ballast(qint64 left) : file_(QDir::temp().filePath(QStringLiteral("zavorra"))) {
        EXPECT_TRUE(file_.open(QIODevice::WriteOnly));
        const qint64 size = QStorageInfo(QDir::tempPath()).bytesAvailable() - left;
        EXPECT_EQ(file_.write(QByteArray(size, 'z')), size);
        EXPECT_TRUE(file_.flush());
    }
    ~Ballast() { file_.remove(); }
    Ballast(const Ballast&) = delete;
    Ballast& operator=(const Ballast&) = delete;

  private:
    QFile file_;
};

class FullDisk : public ProgramTest {};

TEST_F(FullDisk, ARecordingWithoutRoomIsReportedAndDeleted) {
    home::settle();
    StubRecogniser stub;
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    {
        const Ballast ballast(64 << 10);
        press();
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
        letPass(std::chrono::seconds(1));  // 190 KB
        release();
        EXPECT_TRUE(waitFor([&] {
            return program.statusText() ==
                   QStringLiteral("⚠️ afconvert fallito: spazio su disco esaurito");
        })) << qPrintable(program.statusText());
        expectNothingLeft(program);
    }
    expectDictation(program, receiver, stub, QStringLiteral("c'è posto"));
}

}  // namespace
}  // namespace parlivo::desktop
