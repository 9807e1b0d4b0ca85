#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The feedback window.

usage: feedback_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import windows
from windows import WindowsTest, key, provide_models, settings, store, wait_for

ASKED = "Cosa non va? Cosa miglioreresti?"
REFUSED = "Invio non riuscito — controlla la connessione e riprova."
THANKS = ("Grazie davvero.", "Ogni feedback viene letto e orienta la prossima versione.")


class FeedbackTest(WindowsTest):
    def setUp(self):
        super().setUp()
        store({"onboardingDone": True})
        provide_models("ggml-large-v3-turbo-q8_0.bin")
        self.start("--feedback")
        self.program.wait("Il tuo parere su Parlivo")

    def write(self, text):
        self.program.wait(ASKED, "text").set_text_contents(text)

    def test_what_it_says(self):
        self.program.wait_for_words(
            "Come valuti Parlivo?", ASKED,
            "Inviamo solo: valutazione, testo, email se inserita, versione app e sistema operativo. Nient'altro.")
        self.assertFalse(self.program.is_enabled("Invia feedback"))
        self.write("   ")
        self.program.press("3 stelle")
        self.assertFalse(self.program.is_enabled("Invia feedback"))

    def test_refused_and_then_sent(self):
        self.program.press("4 stelle")
        self.write("Bello")
        self.web.status = 500
        self.program.press("Invia feedback")
        self.program.wait(REFUSED)
        self.assertNotIn("feedbackGiven", settings())
        self.web.status = 200
        self.program.wait("Email", "text").set_text_contents(" io@esempio.it ")
        self.program.press("Invia feedback")
        self.program.wait_for_words(*THANKS)
        self.wait_for_setting("feedbackGiven", True)
        path, feedback = self.web.posts[-1]
        self.assertEqual(path, "/api/feedback")
        self.assertEqual((feedback["rating"], feedback["text"], feedback["email"]), (4, "Bello", "io@esempio.it"))
        self.assertRegex(feedback["macos"], r"^Version .+ \(Build .+\)$")
        self.program.press("Chiudi")
        self.program.wait_until_gone("Il tuo parere su Parlivo")

    def test_nobody_there(self):
        self.web.end()
        self.write("Bello")
        self.program.press("Invia feedback")
        self.program.wait(REFUSED)
        self.assertTrue(self.program.is_enabled("Invia feedback"), "it can be tried again")

    def test_the_keyboard_alone_is_enough(self):
        self.program.explained("the focus", lambda: self.program.has_focus(ASKED, "text"))
        key("C", "i", "a", "o", "Tab")
        self.program.explained("the focus", lambda: self.program.has_focus("Email"))
        key("Return")
        self.program.wait_for_words(*THANKS)
        self.assertEqual(self.web.posts[-1][1]["text"], "Ciao")
        key("Return")
        self.program.wait_until_gone(THANKS[0])

    def test_escape_closes_and_keeps_the_form(self):
        self.write("quasi finito")
        self.program.explained("the focus", lambda: self.program.has_focus(ASKED, "text"))
        key("Escape")
        self.program.wait_until_gone("Il tuo parere su Parlivo")
        windows.command("--feedback")
        text = self.program.wait(ASKED, "text")
        self.assertEqual(windows.Atspi.Text.get_text(text, 0, -1), "quasi finito")

    def test_tab_comes_to_everything(self):
        self.write("Ciao")
        self.program.explained("the focus", lambda: self.program.has_focus(ASKED, "text"))
        wait_for("the send button", lambda: self.program.is_enabled("Invia feedback"))
        self.assertEqual(self.program.reachable_by_tab(),
                         [ASKED, "Email", "Annulla", "Invia feedback", "1 stella"])


class InvitationTest(WindowsTest):
    """After the twentieth dictation."""

    INVITATION = ("Come ti trovi con Parlivo?", "La tua opinione guida le prossime versioni. Due righe su cosa va e cosa "
                  "miglioreresti valgono oro.")

    def setUp(self):
        super().setUp()
        store({"onboardingDone": True, "cleanupLevel": "none", "dictationCount": 18})
        provide_models("ggml-large-v3-turbo-q8_0.bin")
        self.start()
        wait_for("the program", windows.is_up)

    def dictate(self, number):
        windows.command("--press")
        wait_for("the recording", lambda: windows.state() == "recording")
        windows.speak("Buongiorno a tutti.")
        windows.command("--release")
        self.wait_for_setting("dictationCount", number)
        wait_for("the end of the dictation", lambda: windows.state() == "idle")

    def be_invited(self):
        self.dictate(19)
        self.assertNotIn("feedbackPromptLastShown", settings())
        self.dictate(20)
        self.program.wait_for_words(*self.INVITATION)
        wait_for("the invitation to be remembered", lambda: "feedbackPromptLastShown" in settings())

    def test_accepted(self):
        self.be_invited()
        self.program.explained("the first answer to have the keyboard", lambda: self.program.has_focus("Dì la tua"))
        self.program.press("Dì la tua")
        self.program.wait(ASKED, "text")

    def test_declined_and_left_in_peace(self):
        self.be_invited()
        self.program.press("Non ora")
        self.program.wait_until_gone(self.INVITATION[0])
        self.dictate(21)
        self.assertIsNone(self.program.find(self.INVITATION[0]))
        self.assertIsNone(self.program.find(ASKED))


if __name__ == "__main__":
    windows.main()
