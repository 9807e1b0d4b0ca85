// SPDX-License-Identifier: MIT
#include "input/HotKeyChoice.h"
#include "input/HotKeyManager.h"
#include "models/ModelCatalog.h"
#include "settings/Settings.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <vector>

// The table of settings is the truth; here the manual, the header itself and the tests of the windows, which
// see the program from outside, are held against it.
namespace parlivo {
namespace {

QString read(const char* path) {
    QFile file(QString::fromLatin1(PARLIVO_PROJECT "/") + QString::fromLatin1(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return QString::fromUtf8(file.readAll());
}

QStringList matches(const QString& text, const QString& pattern) {
    QStringList found;
    auto all = QRegularExpression(pattern).globalMatch(text);
    while (all.hasNext()) found.append(all.next().captured(1));
    return found;
}

template <typename Rows>
QStringList idsOf(const Rows& rows) {
    QStringList ids;
    for (const auto& row : rows) ids.append(row.id);
    return ids;
}

/// A setting as the documents show it.
struct Row {
    QString key;
    QStringList values;             ///< all that are allowed; empty if there is no end of them
    std::optional<QString> absent;  ///< nullopt if there is no default to show
};

Row rowOf(const Setting<bool>& setting) {
    return {setting.key,
            {QStringLiteral("true"), QStringLiteral("false")},
            setting.absent ? QStringLiteral("true") : QStringLiteral("false")};
}

Row rowOf(const Setting<qint64>& setting) {
    return {setting.key, {}, QString::number(setting.absent)};
}

Row rowOf(const Setting<QString>& setting) {
    const std::map<QString, QStringList> tables{
        {Settings::hotkeyPreset.key, idsOf(HotKeyManager::presets()) << HotKeyChoice::ownId()},
        {Settings::asrTier.key, idsOf(ModelCatalog::asrTiers())},
        {Settings::cleanupTier.key, idsOf(ModelCatalog::cleanupTiers())}};
    const auto table = tables.find(setting.key);
    return {setting.key, table == tables.end() ? QStringList() : table->second,
            setting.absent.isEmpty() ? std::nullopt : std::optional<QString>(setting.absent)};
}

template <typename T>
Row rowOf(const Setting<std::optional<T>>& setting) {
    return {setting.key, {}, std::nullopt};
}

template <Enumeration T>
Row rowOf(const Setting<T>& setting) {
    QStringList values;
    for (const QLatin1String word : storedWords<T>) values.append(word);
    return {setting.key, values, wordOf(setting.absent)};
}

std::vector<Row> rowsOf(const auto& settings) {
    return std::apply([](const auto&... setting) { return std::vector<Row>{rowOf(setting)...}; }, settings);
}

std::vector<Row> allRows() {
    return rowsOf(std::tuple_cat(Settings::chosenByUser, Settings::keptByProgram));
}

QStringList keysOf(const std::vector<Row>& rows) {
    QStringList keys;
    for (const Row& row : rows) keys.append(row.key);
    return keys;
}

QStringList sorted(QStringList list) {
    list.sort();
    return list;
}

/// The rows of the manual's table, a row for each key of one that stands for several.
std::vector<Row> rowsOfTheManual() {
    const QString section = read("docs/manual.md")
                                .section(QStringLiteral("\n## The settings\n"), 1)
                                .section(QStringLiteral("\n## "), 0, 0);
    std::vector<Row> rows;
    for (const QString& line : matches(section, QStringLiteral("(?m)^(\\| `.*\\|)$"))) {
        const QStringList cells = line.split(QLatin1Char('|'));
        const QString inBackticks = QStringLiteral("`([^`]+)`");
        for (const QString& key : matches(cells.at(1), inBackticks)) {
            rows.push_back(
                {key, matches(cells.at(2), inBackticks), cells.at(3).trimmed().remove(QLatin1Char('`'))});
        }
    }
    return rows;
}

TEST(SettingsTableTest, EverySettingOfTheHeaderIsListedOnceUnderItsOwnName) {
    const QString header = read("src/settings/Settings.h").section(QStringLiteral("namespace Settings {"), 1);
    const QStringList names =
        matches(header, QStringLiteral("inline constexpr Setting<[\\w:<>]+> (\\w+)\\{"));
    const QStringList keys = matches(
        header,
        QStringLiteral("inline constexpr Setting<[\\w:<>]+> \\w+\\{\\s*QLatin1String\\(\"(\\w+)\"\\)"));
    EXPECT_EQ(names, keys);
    EXPECT_EQ(sorted(keysOf(allRows())), sorted(keys));
}

TEST(SettingsTableTest, ADefaultIsAnAllowedValue) {
    for (const Row& row : allRows()) {
        if (!row.values.isEmpty()) {
            EXPECT_TRUE(row.values.contains(*row.absent)) << qPrintable(row.key);
        }
    }
    EXPECT_EQ(Settings::hotkeyPreset.absent, HotKeyManager::presets().front().id);
}

TEST(SettingsTableTest, TheManualShowsWhatTheUserChooses) {
    const std::vector<Row> expected = rowsOf(Settings::chosenByUser);
    const std::vector<Row> shown = rowsOfTheManual();
    ASSERT_EQ(keysOf(shown), keysOf(expected));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const Row& row = expected[i];
        if (row.absent) {
            EXPECT_EQ(shown[i].absent, row.absent) << qPrintable(row.key);
        }
        // What `true` does is told in words where it is not plain.
        const bool isFlag = row.values.contains(QStringLiteral("true"));
        if (!row.values.isEmpty() && !isFlag) {
            EXPECT_EQ(shown[i].values, row.values) << qPrintable(row.key);
        }
    }
}

TEST(SettingsTableTest, TheManualShowsEveryPreset) {
    const QString section = read("docs/manual.md")
                                .section(QStringLiteral("\n| `hotkeyPreset` | the settings say |\n"), 1)
                                .section(QStringLiteral("\n\n"), 0, 0);
    EXPECT_EQ(matches(section, QStringLiteral("(?m)^\\| `([^`]+)` \\|")), idsOf(HotKeyManager::presets()));
}

/// The tests of the windows wait for settings by name and value: choose(..., "key", value) and the like.
class WindowsTestsTest : public testing::TestWithParam<const char*> {};

TEST_P(WindowsTestsTest, ExpectOnlyWhatTheTableKnows) {
    const QRegularExpression expectation(QStringLiteral(
        "(?:choose|pick|wait_for_setting)\\((?:.*, )?\"(\\w+)\", (?:\"([^\"]*)\"|(True|False)|(\\d+))\\)"));
    const QString script = read(GetParam());
    std::map<QString, Row> table;
    for (const Row& row : allRows()) table[row.key] = row;
    auto all = expectation.globalMatch(script);
    ASSERT_TRUE(all.hasNext());
    while (all.hasNext()) {
        const auto found = all.next();
        const auto row = table.find(found.captured(1));
        ASSERT_NE(row, table.end()) << qPrintable(found.captured());
        const QStringList& values = row->second.values;
        if (values.isEmpty()) continue;
        const bool isFlag = values.contains(QStringLiteral("true"));
        EXPECT_TRUE(isFlag ? !found.captured(3).isEmpty() : values.contains(found.captured(2)))
            << qPrintable(found.captured());
    }
}

INSTANTIATE_TEST_SUITE_P(Scripts, WindowsTestsTest,
                         testing::Values("tests/desktop/windows/settings_test.py",
                                         "tests/desktop/windows/onboarding_test.py",
                                         "tests/desktop/windows/feedback_test.py"));

template <Enumeration T>
void expectEachWord(const QString& script, const Setting<T>& setting) {
    for (const QLatin1String word : storedWords<T>) {
        const QString pair = QLatin1Char('"') + word + QLatin1Char('"');
        EXPECT_TRUE(script.contains(pair)) << qPrintable(setting.key + QStringLiteral(": ") + word);
    }
}
template <typename T>
void expectEachWord(const QString& /*script*/, const Setting<T>& /*setting*/) {}

TEST(SettingsTableTest, TheTestsOfTheWindowsMissNoChoice) {
    const QString script = read("tests/desktop/windows/settings_test.py");
    for (const Row& row : rowsOf(Settings::chosenByUser)) {
        EXPECT_TRUE(script.contains(QLatin1Char('"') + row.key + QLatin1Char('"'))) << qPrintable(row.key);
    }
    std::apply([&](const auto&... setting) { (expectEachWord(script, setting), ...); },
               Settings::chosenByUser);
}

}  // namespace
}  // namespace parlivo
