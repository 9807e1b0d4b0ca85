// SPDX-License-Identifier: MIT
#include "settings/Config.h"
#include "support/WindowTest.h"
#include "ui/TierPicker.h"
#include "ui/views/ChoiceRow.h"

#include <QProgressBar>

#include <map>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// The recognisers to choose from, with downloads that go as the test says.
class TierPickerTest : public WindowTest {
  protected:
    TierPickerTest() { picker.show(); }

    ModelFetch fetch() {
        return [this](const ModelCatalog::Entry& entry, FetchObserver observer) {
            started.append(entry.id);
            observers[entry.id] = std::move(observer);
            auto download = std::make_shared<int>(0);
            underWay[entry.id] = download;
            return download;
        };
    }
    Binding<QString> selection() {
        return {.get = [this] { return selected; }, .set = [this](const QString& id) { selected = id; }};
    }

    void progress(const QString& id, double fraction) { observers.at(id).onProgress(fraction, 1, 2); }
    void end(const QString& id, const std::optional<Error>& error = {}) {
        const auto tell = observers.at(id).onCompletion;
        tell(error);
    }
    void succeed(const QString& id) {
        makeModel(ModelCatalog::asrTier(id));
        end(id);
    }
    void fail(const QString& id) {
        end(id, Error(ErrorCode::IncompleteDownload, u"Download incompleto (0MB su 833MB)"_s));
    }

    ChoiceRow* row(const QString& label) const { return dynamic_cast<ChoiceRow*>(button(picker, label)); }
    /// What stands at the end of a row.
    QString trailing(const QString& label) const {
        const QWidget* widget = row(label)->trailing();
        if (widget == nullptr) return u"nothing"_s;
        if (const auto* symbol = dynamic_cast<const SymbolView*>(widget)) return symbol->symbol();
        if (const auto* bar = qobject_cast<const QProgressBar*>(widget)) {
            return u"%1 %"_s.arg(100 * bar->value() / bar->maximum());
        }
        const auto* pressable = qobject_cast<const QAbstractButton*>(widget);
        return pressable && pressable->isEnabled() ? pressable->text() : u"?"_s;
    }

    QString selected = u"best"_s;
    int changes = 0;
    QStringList started;
    std::map<QString, FetchObserver> observers;
    std::map<QString, std::weak_ptr<int>> underWay;
    TierPicker picker{u"Qualità trascrizione"_s, ModelCatalog::asrTiers(), selection(), [this] { ++changes; },
                      fetch()};
};

TEST_F(TierPickerTest, EveryTierIsARowBelowTheTitle) {
    EXPECT_EQ(words(picker),
              QStringList({u"Qualità trascrizione"_s, u"Veloce"_s,
                           u"Whisper turbo q5 · 574 MB · ottimo, più leggero"_s, u"Precisa"_s,
                           u"Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)"_s}));
    EXPECT_TRUE(row(u"Precisa"_s)->isChecked());
    EXPECT_FALSE(row(u"Veloce"_s)->isChecked());
    EXPECT_EQ(row(u"Veloce"_s)->accessibleDescription(),
              u"Whisper turbo q5 · 574 MB · ottimo, più leggero"_s);
}

TEST_F(TierPickerTest, TheCircleOfTheChosenRowIsFilled) {
    const auto circle = [this](const QString& label) {
        for (const auto* widget : row(label)->findChildren<QWidget*>()) {
            if (const auto* symbol = dynamic_cast<const SymbolView*>(widget)) return symbol->symbol();
        }
        return QString();
    };
    EXPECT_EQ(circle(u"Precisa"_s), u"largecircle.fill.circle"_s);
    EXPECT_EQ(circle(u"Veloce"_s), u"circle"_s);
    click(picker, u"Veloce"_s);
    EXPECT_EQ(circle(u"Precisa"_s), u"circle"_s);
    EXPECT_EQ(circle(u"Veloce"_s), u"largecircle.fill.circle"_s);
    EXPECT_EQ(picker.accessibleName(), u"Qualità trascrizione"_s) << "what a screen reader says of the group";
}

TEST_F(TierPickerTest, OnlyTheChosenTierOffersItsDownload) {
    EXPECT_EQ(trailing(u"Precisa"_s), u"Scarica"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"nothing"_s);
}

TEST_F(TierPickerTest, ADownloadedTierHasACheckMark) {
    makeModel(ModelCatalog::asrTier(u"fast"_s));
    makeModel(ModelCatalog::asrTier(u"best"_s));
    picker.hide();
    picker.show();
    EXPECT_EQ(trailing(u"Precisa"_s), u"checkmark.circle.fill"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"checkmark.circle.fill"_s);
    EXPECT_EQ(row(u"Precisa"_s)->trailing()->accessibleName(), u"Scaricato"_s) << "for screen readers";
}

TEST_F(TierPickerTest, TheTierWithoutAFileIsAlwaysThere) {
    TierPicker cleanup(u"Pulizia"_s, ModelCatalog::cleanupTiers(),
                       {.get = [] { return u"none"_s; }, .set = [](const QString&) {}}, {}, fetch());
    cleanup.show();
    const auto* none = dynamic_cast<const ChoiceRow*>(button(cleanup, u"Nessuna"_s));
    ASSERT_NE(none, nullptr);
    EXPECT_NE(dynamic_cast<const SymbolView*>(none->trailing()), nullptr);
    EXPECT_EQ(button(cleanup, u"Scarica"_s), nullptr);
}

TEST_F(TierPickerTest, ChoosingCountsAtOnceAndEveryTime) {
    row(u"Veloce"_s)->click();
    EXPECT_EQ(selected, u"fast"_s);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(trailing(u"Veloce"_s), u"Scarica"_s);
    EXPECT_EQ(trailing(u"Precisa"_s), u"nothing"_s);
    row(u"Veloce"_s)->click();
    EXPECT_EQ(changes, 2) << "even of what is chosen already";
    EXPECT_TRUE(started.isEmpty()) << "downloading is a separate act";
}

TEST_F(TierPickerTest, ADownloadShowsItsProgressAndThenACheck) {
    click(picker, u"Scarica"_s);
    EXPECT_EQ(started, QStringList(u"best"_s));
    EXPECT_EQ(trailing(u"Precisa"_s), u"0 %"_s);
    EXPECT_EQ(row(u"Precisa"_s)->trailing()->width(), 90);
    progress(u"best"_s, 0.38);
    EXPECT_EQ(trailing(u"Precisa"_s), u"38 %"_s);
    EXPECT_EQ(changes, 0);
    succeed(u"best"_s);
    EXPECT_EQ(trailing(u"Precisa"_s), u"checkmark.circle.fill"_s);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(underWay[u"best"_s].expired()) << "nothing is kept of a download that has ended";
}

TEST_F(TierPickerTest, AFailureIsToldUntilTheNextTry) {
    const QString told = u"Download incompleto (0MB su 833MB)"_s;
    click(picker, u"Scarica"_s);
    fail(u"best"_s);
    EXPECT_EQ(words(picker).last(), told);
    EXPECT_EQ(trailing(u"Precisa"_s), u"Scarica"_s);
    EXPECT_EQ(changes, 1);
    row(u"Veloce"_s)->click();
    EXPECT_TRUE(shows(picker, told));
    row(u"Precisa"_s)->click();
    click(picker, u"Scarica"_s);
    EXPECT_FALSE(shows(picker, told));
    EXPECT_EQ(trailing(u"Precisa"_s), u"0 %"_s);
}

TEST_F(TierPickerTest, ADownloadGoesOnOutOfSightOfAnotherChoice) {
    click(picker, u"Scarica"_s);
    progress(u"best"_s, 0.5);
    row(u"Veloce"_s)->click();
    EXPECT_EQ(trailing(u"Precisa"_s), u"nothing"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"Scarica"_s);
    EXPECT_FALSE(underWay[u"best"_s].expired());
    progress(u"best"_s, 0.6);
    row(u"Precisa"_s)->click();
    EXPECT_EQ(trailing(u"Precisa"_s), u"60 %"_s);
    row(u"Veloce"_s)->click();
    changes = 0;
    succeed(u"best"_s);
    EXPECT_EQ(trailing(u"Precisa"_s), u"checkmark.circle.fill"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"Scarica"_s);
    EXPECT_EQ(changes, 1);
}

TEST_F(TierPickerTest, TheDownloadBegunLastIsTheOneThatIsShown) {
    click(picker, u"Scarica"_s);
    row(u"Veloce"_s)->click();
    click(picker, u"Scarica"_s);
    EXPECT_EQ(started, QStringList({u"best"_s, u"fast"_s}));
    progress(u"fast"_s, 0.25);
    progress(u"best"_s, 0.75);
    EXPECT_EQ(trailing(u"Veloce"_s), u"25 %"_s);
    EXPECT_FALSE(underWay[u"best"_s].expired()) << "the first goes on";
    succeed(u"best"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"25 %"_s) << "and its end ends nothing else";
    EXPECT_EQ(trailing(u"Precisa"_s), u"checkmark.circle.fill"_s);
    succeed(u"fast"_s);
    EXPECT_EQ(trailing(u"Veloce"_s), u"checkmark.circle.fill"_s);
}

TEST_F(TierPickerTest, ATierWithoutItsFileSaysWhichOneStaysInUse) {
    const QString told = u"Finché «Precisa» non è scaricata resta in uso «Veloce»"_s;
    EXPECT_FALSE(shows(picker, told)) << "there is no other";
    makeModel(ModelCatalog::asrTier(u"fast"_s));
    picker.hide();
    picker.show();
    EXPECT_TRUE(shows(picker, told)) << words(picker).join(u'|').toStdString();
    click(picker, u"Scarica"_s);
    EXPECT_TRUE(shows(picker, told));
    succeed(u"best"_s);
    EXPECT_FALSE(shows(picker, told));
}

}  // namespace
}  // namespace parlivo
