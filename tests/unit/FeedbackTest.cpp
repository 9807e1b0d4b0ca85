// SPDX-License-Identifier: MIT
#include "settings/Config.h"
#include "support/AskedWaits.h"
#include "support/StubServer.h"
#include "support/WindowTest.h"
#include "ui/views/SymbolView.h"
#include "update/feedback/FeedbackWindowController.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

#include <algorithm>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

const QString failure = u"Invio non riuscito — controlla la connessione e riprova."_s;

class FeedbackTest : public WindowTest {
  protected:
    FeedbackTest() { qputenv("PARLIVO_SITE_BASE", "http://127.0.0.1:" + QByteArray::number(site.port())); }
    ~FeedbackTest() override { qunsetenv("PARLIVO_SITE_BASE"); }
    FeedbackTest(const FeedbackTest&) = delete;
    FeedbackTest& operator=(const FeedbackTest&) = delete;

    QWidget& window() const { return *controller.window(); }
    QPlainTextEdit* text() const { return window().findChild<QPlainTextEdit*>(); }
    QLineEdit* email() const { return window().findChild<QLineEdit*>(); }
    QAbstractButton* sendButton() const { return button(window(), u"Invia feedback"_s); }

    void answerWith(const StubReply& reply) { site.on("/api/feedback", reply); }
    void send(const QString& words) {
        controller.show();
        text()->setPlainText(words);
        click(window(), u"Invia feedback"_s);
    }
    bool waitForFailure() const {
        return desktop::waitFor([&] { return shows(window(), failure); });
    }
    bool waitForThanks() const {
        return desktop::waitFor([&] { return shows(window(), u"Grazie davvero."_s); });
    }
    QJsonObject sent() const {
        return QJsonDocument::fromJson(site.requests("/api/feedback").at(0).body).object();
    }

    StubServer site;
    FeedbackWindowController controller;
};

TEST_F(FeedbackTest, TheFormShowsTheStatedTexts) {
    controller.show();
    EXPECT_EQ(window().windowTitle(), u"Il tuo parere su Parlivo"_s);
    EXPECT_EQ(window().size(), QSize(440, 400));
    EXPECT_EQ(
        words(window()),
        QStringList(
            {u"Come valuti Parlivo?"_s, u"Cosa non va? Cosa miglioreresti?"_s,
             u"Inviamo solo: valutazione, testo, email se inserita, versione app e macOS. Nient'altro."_s}));
    EXPECT_EQ(email()->placeholderText(), u"Email (facoltativa, se vuoi una risposta)"_s);
    EXPECT_EQ(text()->parentWidget()->height(), 120);
}

TEST_F(FeedbackTest, TheButtonsAreInTheLowerCorners) {
    controller.show();
    const auto placeOf = [this](const QAbstractButton* inner) {
        return QRect(inner->mapTo(&window(), QPoint()), inner->size());
    };
    const QRect fields(text()->parentWidget()->mapTo(&window(), QPoint()), text()->parentWidget()->size());
    const QRect cancel = placeOf(button(window(), u"Annulla"_s));
    const QRect send = placeOf(sendButton());
    EXPECT_EQ(cancel.left(), fields.left());
    EXPECT_EQ(send.right(), fields.right());
    EXPECT_EQ(send.center().y(), cancel.center().y());
    EXPECT_GT(send.top(), email()->mapTo(&window(), QPoint()).y() + email()->height());
}

TEST_F(FeedbackTest, TheFieldsHaveNamesForScreenReaders) {
    controller.show();
    EXPECT_EQ(text()->accessibleName(), u"Cosa non va? Cosa miglioreresti?"_s);
    EXPECT_EQ(email()->accessibleName(), u"Email"_s);
}

TEST_F(FeedbackTest, EverythingIsSentAsStated) {
    answerWith(StubReply::body("{}"));
    controller.show();
    click(window(), u"4 stelle"_s);
    email()->setText(u"  io@esempio.it \u00a0"_s);
    send(u"\n  Bello,\nma lento. \n"_s);
    ASSERT_TRUE(waitForThanks());
    const auto request = site.requests("/api/feedback").at(0);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(sent(), QJsonObject({{u"rating"_s, 4},
                                   {u"text"_s, u"Bello,\nma lento."_s},
                                   {u"email"_s, u"io@esempio.it"_s},
                                   {u"appVersion"_s, u"1.2.3"_s},
                                   {u"macos"_s, u"Version 14.5 (Build 23F79)"_s}}));
    EXPECT_EQ(stored(Settings::feedbackGiven), true);
    EXPECT_EQ(logged(), QStringList(u"feedback inviato (rating 4)"_s));
}

TEST_F(FeedbackTest, WithoutAStarTheRatingIsZero) {
    answerWith(StubReply::body({}, 299));
    send(u"ciao"_s);
    ASSERT_TRUE(waitForThanks());
    EXPECT_EQ(sent().value(u"rating"_s), 0);
    EXPECT_EQ(sent().value(u"email"_s), u""_s);
}

TEST_F(FeedbackTest, ALaterStarReplacesAnEarlierOne) {
    answerWith(StubReply::body("{}"));
    controller.show();
    click(window(), u"5 stelle"_s);
    click(window(), u"1 stella"_s);
    send(u"ciao"_s);
    ASSERT_TRUE(waitForThanks());
    EXPECT_EQ(sent().value(u"rating"_s), 1);
}

TEST_F(FeedbackTest, BlanksAloneCannotBeSentButLineEndsCan) {
    answerWith(StubReply::body("{}"));
    controller.show();
    click(window(), u"5 stelle"_s);
    EXPECT_FALSE(sendButton()->isEnabled()) << "a rating alone is not enough";
    text()->setPlainText(u"   \t \u00a0"_s);
    EXPECT_FALSE(sendButton()->isEnabled());
    text()->setPlainText(u"\n\n"_s);
    EXPECT_TRUE(sendButton()->isEnabled());
    click(window(), u"Invia feedback"_s);
    ASSERT_TRUE(waitForThanks());
    EXPECT_EQ(sent().value(u"text"_s), u""_s);
}

TEST_F(FeedbackTest, WhileSendingTheButtonSaysSoAndIsDisabled) {
    answerWith(StubReply::of(StubReply::Manner::Never));
    send(u"ciao"_s);
    ASSERT_NE(button(window(), u"Invio…"_s), nullptr);
    EXPECT_FALSE(button(window(), u"Invio…"_s)->isEnabled());
    text()->setPlainText(u"altro"_s);
    EXPECT_FALSE(button(window(), u"Invio…"_s)->isEnabled());
}

TEST_F(FeedbackTest, AnyAnswerButSuccessIsAFailure) {
    Clock::setScale(0.05);  // after an interim status the answer is still to come
    StubReply elsewhere = StubReply::body({}, 302);
    elsewhere.bytes.replace("\r\n\r\n", "\r\nLocation: /altrove\r\n\r\n");
    site.on("/altrove", StubReply::body("{}"));
    for (const StubReply& reply :
         {StubReply::body({}, 500), StubReply::body({}, 404), StubReply::body({}, 199),
          StubReply::body({}, 300), elsewhere, StubReply::of(StubReply::Manner::CloseAtOnce),
          StubReply::cutOff("{", 100)}) {
        FeedbackWindowController fresh;
        answerWith(reply);
        fresh.show();
        fresh.window()->findChild<QPlainTextEdit*>()->setPlainText(u"ciao"_s);
        click(*fresh.window(), u"Invia feedback"_s);
        EXPECT_TRUE(desktop::waitFor([&] { return shows(*fresh.window(), failure); }))
            << reply.bytes.left(40).toStdString();
        EXPECT_FALSE(stored(Settings::feedbackGiven).isValid());
    }
    EXPECT_TRUE(site.requests("/altrove").empty());
}

TEST_F(FeedbackTest, ASiteThatNeverAnswersFailsAfterItsTime) {
    Clock::setScale(0.02);
    answerWith(StubReply::of(StubReply::Manner::Never));
    const AskedWaits asked;
    send(u"ciao"_s);
    EXPECT_TRUE(waitForFailure());
    EXPECT_EQ(asked.all(), std::vector<std::chrono::milliseconds>{std::chrono::seconds(15)});
}

TEST_F(FeedbackTest, AfterAFailureTheFormIsKeptAndCanBeSentAgain) {
    site.on("/api/feedback", {StubReply::body({}, 500), StubReply::body("{}")});
    send(u"ciao"_s);
    ASSERT_TRUE(waitForFailure());
    EXPECT_EQ(text()->toPlainText(), u"ciao"_s);
    click(window(), u"Invia feedback"_s);
    EXPECT_FALSE(shows(window(), failure));
    EXPECT_TRUE(waitForThanks());
}

TEST_F(FeedbackTest, ThanksStayAsLongAsTheWindow) {
    answerWith(StubReply::body("{}"));
    send(u"ciao"_s);
    ASSERT_TRUE(waitForThanks());
    EXPECT_EQ(words(window()), QStringList({u"Grazie davvero."_s,
                                            u"Ogni feedback viene letto e orienta la prossima versione."_s}));
    const auto symbols = window().findChildren<SymbolView*>();
    const auto heart = std::ranges::find(symbols, u"heart.fill"_s, &SymbolView::symbol);
    ASSERT_NE(heart, symbols.end());
    EXPECT_EQ((*heart)->size(), QSize(36, 36));
    click(window(), u"Chiudi"_s);
    EXPECT_FALSE(window().isVisible());
    controller.show();
    EXPECT_TRUE(shows(window(), u"Grazie davvero."_s));
}

TEST_F(FeedbackTest, ReturnClosesTheThanks) {
    answerWith(StubReply::body("{}"));
    send(u"ciao"_s);
    ASSERT_TRUE(waitForThanks());
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(FeedbackTest, ClosingKeepsTheForm) {
    controller.show();
    text()->setPlainText(u"quasi finito"_s);
    click(window(), u"Annulla"_s);
    EXPECT_FALSE(window().isVisible());
    const QWidget* first = controller.window();
    controller.show();
    EXPECT_EQ(controller.window(), first);
    EXPECT_EQ(text()->toPlainText(), u"quasi finito"_s);
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

/// The occasional invitation; the form behind it is tested above.
class FeedbackInvitationTest : public WindowTest {
  protected:
    FeedbackInvitationTest() {
        store(Settings::dictationCount, 20);
        dialogs->answer = 1;
    }

    static QDateTime now() { return QDateTime::currentDateTimeUtc(); }
    bool invites() {
        dialogs->alerts.clear();
        controller.maybePromptAfterDictation();
        return !dialogs->alerts.empty();
    }

    FeedbackWindowController controller;
};

TEST_F(FeedbackInvitationTest, ComesAtTheTwentiethDictation) {
    store(Settings::dictationCount, 19);
    EXPECT_FALSE(invites());
    EXPECT_EQ(Config::get(Settings::feedbackPromptLastShown), std::nullopt);
    store(Settings::dictationCount, 20);
    EXPECT_TRUE(invites());
    ASSERT_TRUE(Config::get(Settings::feedbackPromptLastShown).has_value());
    EXPECT_LT(Config::get(Settings::feedbackPromptLastShown)->secsTo(now()), 60);
    EXPECT_FALSE(invites()) << "once is enough for now";
}

TEST_F(FeedbackInvitationTest, ShowsTheStatedTexts) {
    ASSERT_TRUE(invites());
    const Alert& alert = dialogs->alerts.at(0);
    EXPECT_EQ(alert.message, u"Come ti trovi con Parlivo?"_s);
    EXPECT_EQ(
        alert.informativeText,
        u"La tua opinione guida le prossime versioni. Due righe su cosa va e cosa miglioreresti valgono oro."_s);
    EXPECT_EQ(alert.buttons, QStringList({u"Dì la tua"_s, u"Non ora"_s}));
}

TEST_F(FeedbackInvitationTest, ComesAgainAfterThirtyDaysToTheSecond) {
    constexpr qint64 thirtyDays = 2'592'000;
    for (const auto& [age, expected] :
         {std::pair(thirtyDays - 3600, false), std::pair(thirtyDays - 60, false), std::pair(thirtyDays, true),
          std::pair(thirtyDays * 5, true)}) {
        Config::set(Settings::feedbackPromptLastShown, now().addSecs(-age));
        EXPECT_EQ(invites(), expected) << age;
    }
}

TEST_F(FeedbackInvitationTest, AClockThatWasSetBackDoesNotInvite) {
    Config::set(Settings::feedbackPromptLastShown, now().addDays(2));
    EXPECT_FALSE(invites());
}

TEST_F(FeedbackInvitationTest, ADateThatIsNoDateCountsAsNever) {
    store(Settings::feedbackPromptLastShown, u"ieri"_s);
    EXPECT_TRUE(invites());
}

TEST_F(FeedbackInvitationTest, NeverComesAgainOnceFeedbackWasGiven) {
    store(Settings::feedbackGiven, true);
    EXPECT_FALSE(invites());
}

TEST_F(FeedbackInvitationTest, TheFirstAnswerOpensTheForm) {
    dialogs->answer = 0;
    EXPECT_TRUE(invites());
    ASSERT_NE(controller.window(), nullptr);
    EXPECT_TRUE(controller.window()->isVisible());
}

TEST_F(FeedbackInvitationTest, TheOtherAnswerOpensNothing) {
    EXPECT_TRUE(invites());
    EXPECT_EQ(controller.window(), nullptr);
}

}  // namespace
}  // namespace parlivo
