// SPDX-License-Identifier: MIT
#include "update/FeedEntry.h"
#include "update/Versions.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <limits>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

QJsonObject feed() {
    return {{u"version"_s, u"1.4.2"_s},
            {u"url"_s, u"https://parlivo.example/Parlivo.zip"_s},
            {u"changelog"_s, u"Più veloce.\nPiù bello."_s},
            {u"size"_s, 12'345'678},
            {u"date"_s, u"2026-05-01"_s}};
}

std::optional<FeedEntry> decode(const QJsonObject& object) {
    return FeedEntry::decode(QJsonDocument(object).toJson());
}

TEST(FeedEntryTest, HasAFieldForEachKey) {
    const auto entry = decode(feed());
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->version, u"1.4.2"_s);
    EXPECT_EQ(entry->url, u"https://parlivo.example/Parlivo.zip"_s);
    EXPECT_EQ(entry->changelog, u"Più veloce.\nPiù bello."_s);
    EXPECT_EQ(entry->size, 12'345'678);
    EXPECT_EQ(entry->date, u"2026-05-01"_s);
}

TEST(FeedEntryTest, MayStateAHashAndASignature) {
    EXPECT_EQ(decode(feed())->sha256, std::nullopt);
    EXPECT_EQ(decode(feed())->signature, QByteArray());
    QJsonObject object = feed();
    object[u"sha256"_s] = u"00ff"_s;
    object[u"signature"_s] = u"AAEC"_s;
    const auto entry = decode(object);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->sha256, u"00ff"_s);
    EXPECT_EQ(entry->signature, QByteArray("\0\1\2", 3));
    for (const QString& key : {u"sha256"_s, u"signature"_s}) {
        for (const QJsonValue& wrong :
             {QJsonValue(), QJsonValue(true), QJsonValue(12), QJsonValue(QJsonObject())}) {
            QJsonObject wronged = object;
            wronged[key] = wrong;
            EXPECT_FALSE(decode(wronged).has_value()) << key.toStdString();
        }
    }
}

TEST(FeedEntryTest, NeedsEveryKey) {
    for (const QString& key : feed().keys()) {
        QJsonObject lacking = feed();
        lacking.remove(key);
        EXPECT_FALSE(decode(lacking).has_value()) << key.toStdString();
    }
}

TEST(FeedEntryTest, TakesNoValueOfAnotherType) {
    for (const QString& key : feed().keys()) {
        for (const QJsonValue& wrong : {QJsonValue(), QJsonValue(true), QJsonValue(QJsonObject()),
                                        key == u"size"_s ? QJsonValue(u"12"_s) : QJsonValue(12)}) {
            QJsonObject object = feed();
            object[key] = wrong;
            EXPECT_FALSE(decode(object).has_value()) << key.toStdString();
        }
    }
}

TEST(FeedEntryTest, IgnoresFurtherKeys) {
    QJsonObject object = feed();
    object[u"minimumSystem"_s] = u"14.0"_s;
    object[u"Version"_s] = 3;
    EXPECT_TRUE(decode(object).has_value());
}

TEST(FeedEntryTest, TheSizeIsAWholeNumberOfSixtyFourBits) {
    const auto sized = [](const QByteArray& number) {
        QByteArray text = QJsonDocument(feed()).toJson();
        return FeedEntry::decode(text.replace("12345678", number));
    };
    EXPECT_EQ(sized("0")->size, 0);
    EXPECT_EQ(sized("-5")->size, -5);
    EXPECT_EQ(sized("9223372036854775807")->size, std::numeric_limits<qint64>::max());
    EXPECT_EQ(sized("3.0")->size, 3);
    EXPECT_FALSE(sized("3.5").has_value());
    EXPECT_FALSE(sized("9223372036854775808").has_value());
    EXPECT_FALSE(sized("1e300").has_value());
}

TEST(FeedEntryTest, IsNothingElse) {
    for (const QByteArray& text :
         {QByteArray(), QByteArray("null"), QByteArray("[]"), QByteArray("\"version\""), QByteArray("{"),
          QByteArray("<html></html>"), QByteArray(5 << 20, '['), QByteArray(5 << 20, '\xff')}) {
        EXPECT_FALSE(FeedEntry::decode(text).has_value()) << text.left(20).toStdString();
    }
}

TEST(VersionsTest, AreComparedAsNumbers) {
    EXPECT_TRUE(isNewer(u"1.10"_s, u"1.9"_s));
    EXPECT_FALSE(isNewer(u"1.9"_s, u"1.10"_s));
    EXPECT_TRUE(isNewer(u"2"_s, u"1.99.99"_s));
    EXPECT_TRUE(isNewer(u"1.0.1"_s, u"1.0.0"_s));
    EXPECT_FALSE(isNewer(u"1.4.2"_s, u"1.4.2"_s));
}

TEST(VersionsTest, MissingPiecesCountAsZero) {
    EXPECT_FALSE(isNewer(u"1.2"_s, u"1.2.0"_s));
    EXPECT_FALSE(isNewer(u"1.2.0"_s, u"1.2"_s));
    EXPECT_TRUE(isNewer(u"1.2.1"_s, u"1.2"_s));
    EXPECT_FALSE(isNewer(u"1..2"_s, u"1.2"_s));
    EXPECT_FALSE(isNewer(u"1.2"_s, u"1..2"_s));
}

TEST(VersionsTest, PiecesThatAreNoNumbersAreLeftOut) {
    EXPECT_FALSE(isNewer(u"1.2.3-beta"_s, u"1.2.3"_s));
    EXPECT_TRUE(isNewer(u"1.2.3-beta"_s, u"1.1"_s));
    EXPECT_TRUE(isNewer(u"1.x.3"_s, u"1.2"_s)) << "1.3 against 1.2";
    for (const QString& odd : {u""_s, u"..."_s, u"beta"_s, u"+5"_s, u"-5"_s, u" 5"_s, u"٣"_s}) {
        EXPECT_FALSE(isNewer(odd, u"0"_s)) << odd.toStdString();
        EXPECT_FALSE(isNewer(u"0"_s, odd)) << odd.toStdString();
    }
}

TEST(VersionsTest, APieceBeyondSixtyFourBitsIsNoNumber) {
    EXPECT_TRUE(isNewer(u"9223372036854775807"_s, u"9223372036854775806"_s));
    EXPECT_FALSE(isNewer(u"9223372036854775808"_s, u"1"_s));
    EXPECT_FALSE(isNewer(QString(10'000, u'9'), u"1"_s));
    EXPECT_TRUE(isNewer(u"1"_s, QString(10'000, u'9')));
}

}  // namespace
}  // namespace parlivo
