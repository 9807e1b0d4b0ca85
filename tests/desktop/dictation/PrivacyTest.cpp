// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <algorithm>

namespace parlivo::desktop {
namespace {

/// What others could learn of a dictation.
class PrivacyTest : public ProgramTest {
  protected:
    /// A program that asks for updates at this address.
    static QProcessEnvironment withSite(const QString& address) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PARLIVO_SITE_BASE"), address);
        return environment;
    }

    /// The tries to reach somebody in this world's network, which knows no way out, since it began: the
    /// system counts them (RFC 4293, ipSystemStatsOutNoRoutes; Linux: /proc/net/snmp and snmp6).
    static qint64 triesToLeave() {
        return valueBelow(QStringLiteral("/proc/net/snmp"), QStringLiteral("OutNoRoutes")) +
               valueBeside(QStringLiteral("/proc/net/snmp6"), QStringLiteral("Ip6OutNoRoutes"));
    }

    static QStringList linesOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
        return QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    }
    /// Of a table with its head in one line and its values in the next.
    static qint64 valueBelow(const QString& path, const QString& name) {
        const QStringList lines = linesOf(path);
        for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
            const auto column = lines[i].split(QLatin1Char(' ')).indexOf(name);
            if (column >= 0) return lines[i + 1].split(QLatin1Char(' ')).value(column).toLongLong();
        }
        ADD_FAILURE() << qPrintable(path);
        return 0;
    }
    /// Of a list of names and values. Where IPv6 is switched off there is none.
    static qint64 valueBeside(const QString& path, const QString& name) {
        if (!QFile::exists(path)) return 0;
        for (const QString& line : linesOf(path)) {
            const QStringList words = line.simplified().split(QLatin1Char(' '));
            if (words.first() == name) return words.value(1).toLongLong();
        }
        return 0;
    }

    static bool isLoopback(const Listener& listener) {
        return listener.address == QLatin1String("0100007F") ||
               listener.address == QLatin1String("00000000000000000000000001000000");
    }

    static QStringList commandLinesWith(const QByteArray& text) {
        QStringList found;
        for (const QString& process : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")})) {
            QFile file(QStringLiteral("/proc/%1/cmdline").arg(process));
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(text)) found.append(process);
        }
        return found;
    }
};

TEST_F(PrivacyTest, WithBothEnginesNobodyOutsideIsAskedAndNobodyOutsideCanAsk) {
    home::provideModels();
    home::settle({{QStringLiteral("cleanupTier"), QStringLiteral("light")},
                  {QStringLiteral("cleanupLevel"), QStringLiteral("light")}});
    const StubServer site;
    const qint64 before = triesToLeave();
    const Program program(builtBundle(), withSite(QStringLiteral("http://127.0.0.1:%1").arg(site.port())));
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(QStringLiteral("http://127.0.0.1:8766/health")));
    const QString id = QStringLiteral("f13");
    const auto& spoken = phrase(id);
    dictate(program, spoken);
    EXPECT_TRUE(receiver.waitForText(spoken.clean.value(QStringLiteral("light")), engineTimeout))
        << qPrintable(receiver.text()) << qPrintable(program.statusText());
    expectNothingLeft(program);

    EXPECT_EQ(site.requests("/updates.json").size(), 1U) << "the one question it may ask";
    EXPECT_EQ(site.requests().size(), 1U);
    EXPECT_EQ(triesToLeave(), before);
    const auto all = listeners();
    for (const quint16 port : {quint16(8765), quint16(8766)}) {
        EXPECT_TRUE(std::ranges::any_of(all, [&](const auto& listener) { return listener.port == port; }))
            << port;
    }
    for (const Listener& listener : all) EXPECT_TRUE(isLoopback(listener)) << qPrintable(listener.address);
}

TEST_F(PrivacyTest, ARequestToTheOutsideIsDetected) {
    home::settle();
    const StubRecogniser stub(QStringLiteral("zitto"));
    const qint64 before = triesToLeave();
    // An address for documents, which is nobody's (RFC 5737).
    const Program program(builtBundle(), withSite(QStringLiteral("http://192.0.2.1")));
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_TRUE(waitFor([&] { return triesToLeave() > before; }));
}

TEST_F(PrivacyTest, TheTextIsOnNoCommandLineInNoLogAndInNoFile) {
    const QString secret = QStringLiteral("quarantadue zebre tacciono");
    const QByteArray utf16(reinterpret_cast<const char*>(secret.utf16()), secret.size() * 2);
    home::settle({{QStringLiteral("typingSpeed"), QStringLiteral("natural")}});
    const StubRecogniser stub(secret);
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    {
        // Its own file is gone with it.
        const Receiver receiver(Receiver::Kind::Qt);
        dictateSilence(program);
        EXPECT_TRUE(waitFor([&] {
            // At every moment on the way.
            EXPECT_EQ(commandLinesWith("quarantadue"), QStringList());
            EXPECT_FALSE(home::log().contains(QLatin1String("quarantadue")));
            return receiver.text() == secret;
        })) << qPrintable(receiver.text());
        expectNothingLeft(program);
    }
    EXPECT_EQ(commandLinesWith("quarantadue"), QStringList());
    EXPECT_EQ(home::filesWith(secret.toUtf8()), QStringList());
    EXPECT_EQ(home::filesWith(utf16), QStringList());
    // Sound, under whatever name.
    EXPECT_EQ(home::filesWith(QByteArray("caff\0\1", 6)), QStringList());
    EXPECT_EQ(home::filesWith("WAVEfmt "), QStringList());
    // The search finds what is there.
    QFile witness(QDir::temp().filePath(QStringLiteral("testimone")));
    ASSERT_TRUE(witness.open(QIODevice::WriteOnly) && witness.write("prima " + utf16) > 0);
    witness.close();
    EXPECT_EQ(home::filesWith(utf16), QStringList(witness.fileName()));
}

/// A clipboard manager that keeps everything but what is marked as secret: the rule of those that know the
/// hint `x-kde-passwordManagerHint`.
class ClipboardManager : public QObject {
  public:
    ClipboardManager() {
        auto* const clipboard = QGuiApplication::clipboard();
        connect(clipboard, &QClipboard::dataChanged, this, [this] { take(QClipboard::Clipboard); });
        connect(clipboard, &QClipboard::selectionChanged, this, [this] { take(QClipboard::Selection); });
    }
    const QStringList& history() const { return history_; }
    int secrets() const { return secrets_; }

  private:
    void take(QClipboard::Mode mode) {
        const QMimeData* const data = QGuiApplication::clipboard()->mimeData(mode);
        if (!data) return;
        if (data->data(QStringLiteral("x-kde-passwordManagerHint")) == "secret") {
            ++secrets_;
        } else {
            history_.append(data->text());
        }
    }

    QStringList history_;
    int secrets_ = 0;
};

TEST_F(PrivacyTest, AClipboardManagerKeepsACopyButNoDictation) {
    home::settle({{QStringLiteral("typingSpeed"), QStringLiteral("instant")}});
    const ClipboardManager manager;
    StubRecogniser stub(QStringLiteral("dettato in segreto"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    QProcess copy;
    copy.setStandardOutputFile(QProcess::nullDevice());
    copy.start(QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard")});
    ASSERT_TRUE(copy.waitForStarted());
    copy.write("copiato da altri");
    copy.closeWriteChannel();
    const QString copied = QStringLiteral("copiato da altri");
    ASSERT_TRUE(waitFor([&] { return manager.history().contains(copied); }));

    dictateSilence(program);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("dettato in segreto"))) << qPrintable(receiver.text());
    expectNothingLeft(program);
    EXPECT_TRUE(waitFor([&] { return QGuiApplication::clipboard()->text() == copied; })) << "it is put back";
    EXPECT_GT(manager.secrets(), 0) << "the manager saw it";
    EXPECT_FALSE(manager.history().contains(QStringLiteral("dettato in segreto")))
        << qPrintable(manager.history().join(QLatin1Char('|')));
}

}  // namespace
}  // namespace parlivo::desktop
