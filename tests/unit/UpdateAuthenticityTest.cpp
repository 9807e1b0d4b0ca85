// SPDX-License-Identifier: MIT
#include "UpdateTest.h"
#include "support/Errors.h"
#include "update/UpdateAuthenticity.h"
#include "update/UpdateInstaller.h"

#include <QCryptographicHash>

#include <sodium.h>

#include <array>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

const unsigned char* bytes(const QByteArray& array) {
    return reinterpret_cast<const unsigned char*>(array.constData());
}

QByteArray hexHash(const QByteArray& content) {
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
}

/// Those who make the program.
class Maker {
  public:
    Maker() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(public_.data(), secret_.data());
    }
    UpdateKey key() const {
        return {reinterpret_cast<const char*>(public_.data()), crypto_sign_PUBLICKEYBYTES};
    }
    QByteArray sign(const QByteArray& text) const {
        std::array<unsigned char, crypto_sign_BYTES> signature{};
        crypto_sign_detached(signature.data(), nullptr, bytes(text),
                             static_cast<unsigned long long>(text.size()), secret_.data());
        return {reinterpret_cast<const char*>(signature.data()), crypto_sign_BYTES};
    }

  private:
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> public_{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret_{};
};

class UpdateAuthenticityTest : public UpdateTest {
  protected:
    /// What the makers publish.
    FeedEntry publish(const QByteArray& archive,
                      const QString& version = QString::fromLatin1(newVersion)) const {
        FeedEntry entry = entryFor(archive);
        entry.version = version;
        entry.sha256 = QString::fromLatin1(hexHash(archive));
        entry.signature = maker.sign(signedText(version, archive.size(), hexHash(archive)));
        return entry;
    }

    std::optional<Error> install(const QByteArray& archive, const FeedEntry& entry,
                                 const std::optional<UpdateKey>& key) const {
        const QString path = place.filePath(u"arrived.zip"_s);
        write(path, archive);
        try {
            installUpdate(path, entry, key);
        } catch (const Error& error) {
            return error;
        }
        return std::nullopt;
    }

    void expectRefusal(const std::optional<Error>& failure, const QString& text) const {
        ASSERT_TRUE(failure.has_value());
        EXPECT_TRUE(isError(*failure, ErrorCode::UpdateCorrupted)) << failure->what();
        EXPECT_EQ(failure->localizedDescription(), text);
        EXPECT_TRUE(isUntouched());
    }

    const QString wrongSize = u"Aggiornamento corrotto (dimensione inattesa)"_s;
    const QString wrongContent = u"Aggiornamento corrotto (contenuto inatteso)"_s;
    const QString unsignedUpdate = u"Aggiornamento non autentico (firma mancante)"_s;
    const QString wrongSignature = u"Aggiornamento non autentico (firma non valida)"_s;
    const Maker maker;
    const QByteArray zip = zipOf(newBundle());
};

TEST_F(UpdateAuthenticityTest, ASignedUpdateIsInstalled) {
    const auto failure = install(zip, publish(zip), maker.key());
    EXPECT_FALSE(failure.has_value()) << failure->what();
    EXPECT_EQ(contents(running()).at(u"Contents/MacOS/Parlivo"_s), "new program");
}

TEST_F(UpdateAuthenticityTest, TheHashIsCheckedWithoutAKeyToo) {
    FeedEntry entry = entryFor(zip);
    for (const QByteArray& wrong : {hexHash("another"), QByteArray(), hexHash(zip).chopped(1),
                                    hexHash(zip) + '0', QByteArray("città")}) {
        entry.sha256 = QString::fromUtf8(wrong);
        expectRefusal(install(zip, entry, std::nullopt), wrongContent);
    }
    entry.sha256 = QString::fromLatin1(hexHash(zip).toUpper());
    EXPECT_FALSE(install(zip, entry, std::nullopt).has_value()) << "either case of the digits will do";
}

TEST_F(UpdateAuthenticityTest, WithoutASignatureNothingIsInstalledWhereThereIsAKey) {
    FeedEntry entry = publish(zip);
    entry.signature.clear();
    expectRefusal(install(zip, entry, maker.key()), unsignedUpdate);
    expectRefusal(install(zip, entryFor(zip), maker.key()), unsignedUpdate);
}

TEST_F(UpdateAuthenticityTest, AnotherKeysSignatureIsRefused) {
    expectRefusal(install(zip, publish(zip), Maker().key()), wrongSignature);
    for (const UpdateKey& none : {UpdateKey(), maker.key().first(31), maker.key() + 'x', UpdateKey(32, '\0')})
        expectRefusal(install(zip, publish(zip), none), wrongSignature);
}

TEST_F(UpdateAuthenticityTest, ADamagedSignatureIsRefused) {
    FeedEntry entry = publish(zip);
    const QByteArray sound = entry.signature;
    for (const QByteArray& damaged : {sound.chopped(1), sound + 'x', QByteArray(64, '\0'), QByteArray("x")}) {
        entry.signature = damaged;
        expectRefusal(install(zip, entry, maker.key()), wrongSignature);
    }
    for (const qsizetype at : {0, 31, 32, 63}) {
        entry.signature = sound;
        entry.signature[at] = static_cast<char>(sound[at] ^ 1);
        expectRefusal(install(zip, entry, maker.key()), wrongSignature);
    }
}

TEST_F(UpdateAuthenticityTest, TheSignatureHoldsForItsVersionAlone) {
    FeedEntry entry = publish(zip, u"1.2.2"_s);
    entry.version = QString::fromLatin1(newVersion);
    expectRefusal(install(zip, entry, maker.key()), wrongSignature);
}

TEST_F(UpdateAuthenticityTest, AnOldUpdateThatIsPlayedBackIsRefused) {
    const QByteArray old = zipOf(newBundle({}, "1.2.2"));
    const auto failure = install(old, publish(old, u"1.2.2"_s), maker.key());
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(isError(*failure, ErrorCode::UpdateBundleInvalid)) << failure->what();
    EXPECT_TRUE(isUntouched());
}

TEST_F(UpdateAuthenticityTest, OneUpdatesFeedWithAnothersArchiveIsRefused) {
    QByteArray swapped = zipOf(newBundle({}, "1.4"));
    ASSERT_EQ(swapped.size(), zip.size());
    expectRefusal(install(swapped, publish(zip), maker.key()), wrongContent);
    FeedEntry mixed = publish(zip);
    mixed.sha256 = publish(swapped).sha256;
    expectRefusal(install(swapped, mixed, maker.key()), wrongSignature);
    mixed.sha256.reset();
    expectRefusal(install(swapped, mixed, maker.key()), wrongSignature);
}

TEST_F(UpdateAuthenticityTest, ATruncatedArchiveIsRefused) {
    expectRefusal(install(zip.chopped(1), publish(zip), maker.key()), wrongSize);
    expectRefusal(install({}, publish(zip), maker.key()), wrongSize);
    FeedEntry adapted = publish(zip);
    adapted.size = zip.size() - 1;
    expectRefusal(install(zip.chopped(1), adapted, maker.key()), wrongContent);
    adapted.sha256 = QString::fromLatin1(hexHash(zip.chopped(1)));
    expectRefusal(install(zip.chopped(1), adapted, maker.key()), wrongSignature);
}

TEST_F(UpdateAuthenticityTest, NothingIsUnpackedBeforeItIsKnownToBeAuthentic) {
    class NoTools : public LinuxBundleTools {
      public:
        Outcome unpack(const QString&, const QString&, qint64) override {
            ADD_FAILURE() << "unpacked";
            return Outcome::Failed;
        }
    } none;
    platform.bundleTools().real = &none;
    expectRefusal(install(zip, entryFor(zip), maker.key()), unsignedUpdate);
    expectRefusal(install(zip, publish(zip), Maker().key()), wrongSignature);
}

/// Key and signature are what `tools/update-feed` and openssl have made of these bytes.
TEST_F(UpdateAuthenticityTest, WhatTheReleaseToolsSignIsAccepted) {
    const QByteArray archive = "contenuto";
    const QString path = place.filePath(u"signed.zip"_s);
    write(path, archive);
    FeedEntry entry = entryFor(archive);
    entry.sha256 = u"5ecf8a3e9aae33e21de58970df1dbf1195f133b3373add4e1b839caec272c36f"_s;
    entry.signature = QByteArray::fromBase64(
        "pHQ/henkLw8llRYGfmBmzPDdfpnUu5IRC/b10CL0mUqu+rFKnuhZ5eiheiO7NO/a2ZJhyOm+FiJ5PtxG96BiCQ==");
    const UpdateKey key = QByteArray::fromBase64("Qc0JkrsIPXfErRDrYmykXUXTpVRoVS/YekFZB3tuI9Q=");
    EXPECT_NO_THROW(checkArchive(path, entry, key));
    entry.version = u"1.4"_s;
    EXPECT_THROW(checkArchive(path, entry, key), Error);
}

TEST(SignedTextTest, IsWhatTheFeedsMakerSigns) {
    EXPECT_EQ(signedText(u"1.3"_s, 77, "00ff"), "parlivo-update\n1.3\n77\n00ff\n");
}

TEST(SafeAddressTest, IsNoWeakerThanTheSites) {
    const QUrl https(u"https://parlivo.example"_s);
    const QUrl http(u"http://127.0.0.1:8000"_s);
    const auto safe = [](const QString& address, const QUrl& site) {
        return isSafeAddress(QUrl(address), site);
    };
    EXPECT_TRUE(safe(u"https://elsewhere.example/a.zip"_s, https));
    EXPECT_TRUE(safe(u"HTTPS://elsewhere.example/a.zip"_s, https));
    EXPECT_TRUE(safe(u"https://elsewhere.example/a.zip"_s, http));
    EXPECT_TRUE(safe(u"http://elsewhere.example/a.zip"_s, http));
    EXPECT_FALSE(safe(u"http://parlivo.example/a.zip"_s, https));
    for (const QString& address :
         {u"file:///etc/passwd"_s, u"ftp://a.example/a.zip"_s, u"data:,x"_s, u"a.zip"_s,
          u"//a.example/a.zip"_s, u"httpss://a.example/a"_s, QString()}) {
        EXPECT_FALSE(safe(address, https)) << address.toStdString();
        EXPECT_FALSE(safe(address, http)) << address.toStdString();
        EXPECT_FALSE(safe(address, QUrl(u"file:///site"_s))) << address.toStdString();
    }
}

}  // namespace
}  // namespace parlivo
