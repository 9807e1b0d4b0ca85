// SPDX-License-Identifier: MIT
#include "models/ModelsMover.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QThread>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class ModelsMoverTest : public PlatformTest {
  protected:
    ModelsMoverTest() {
        QDir().mkpath(from);
        QDir().mkpath(to);
        store(Settings::modelsDir, from);
        write(from + u"/a.bin"_s);
        write(from + u"/appunti.txt"_s);
    }

    static void write(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("modello") == 7);
    }
    static QStringList files(const QString& folder) {
        return QDir(folder).entryList(QDir::Files, QDir::Name);
    }

    const QString from = platform.directories().temporary() + u"/vecchi"_s;
    const QString to = platform.directories().temporary() + u"/nuovi"_s;
};

TEST_F(ModelsMoverTest, TheNewFolderIsInForceBeforeTheOldOneIsEmptied) {
    ModelsMover mover;
    bool adopted = false;
    mover.move(to, [&] {
        adopted = true;
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        EXPECT_EQ(Config::modelsDir(), to);
        EXPECT_EQ(files(to), QStringList(u"a.bin"_s));
        EXPECT_EQ(files(from), QStringList({u"a.bin"_s, u"appunti.txt"_s})) << "both are complete";
    });
    EXPECT_FALSE(adopted) << "it returns at once";
    EXPECT_TRUE(desktop::waitFor([&] { return files(from) == QStringList(u"appunti.txt"_s); }));
    EXPECT_TRUE(adopted);
    EXPECT_EQ(files(to), QStringList(u"a.bin"_s));
}

TEST_F(ModelsMoverTest, TheEndOfTheProgramLeavesTheOldFolderInForce) {
    {
        ModelsMover mover;
        mover.move(to, [] { ADD_FAILURE() << "adopted"; });
        Clock::interruptAll();
    }
    EXPECT_EQ(Config::modelsDir(), from);
    EXPECT_EQ(files(from), QStringList({u"a.bin"_s, u"appunti.txt"_s}));
    QCoreApplication::processEvents();
    EXPECT_EQ(files(to), QStringList());
}

}  // namespace
}  // namespace parlivo
