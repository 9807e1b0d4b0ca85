<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: MIT -->
<!-- Italian to Italian: what the interface says on Linux where its own words name the machine, the system, the menu bar,
     the permission lists or a key of macOS. "%1" in a sentence that has none of its own is the chosen hot key
     (src/input/HotKeyTitle.h); in a preset's name it is what the layout prints on the key. -->
<TS version="2.1" language="it_IT" sourcelanguage="it_IT">
<context>
    <name>parlivo::HotKeyManager</name>
    <message>
        <source>⌥ Spazio</source>
        <translation>Alt+Spazio</translation>
    </message>
    <message>
        <source>⌃⌥ Spazio</source>
        <translation>Ctrl+Alt+Spazio</translation>
    </message>
    <message>
        <source>⌘⇧ Spazio</source>
        <translation>Super+Maiusc+Spazio</translation>
    </message>
    <message>
        <source>⌥ ` (backtick)</source>
        <translation>Alt+%1</translation>
    </message>
</context>
<context>
    <name>parlivo::State</name>
    <message>
        <source>Pronto — tieni premuto ⌥Spazio per dettare</source>
        <translation>Pronto — tieni premuto %1 per dettare</translation>
    </message>
</context>
<context>
    <name>parlivo::CommandLine</name>
    <message>
        <source>Tieni premuto ⌥Spazio, parla, rilascia: il testo appare dove stai scrivendo.
</source>
        <translation>Tieni premuto %1, parla, rilascia: il testo appare dove stai scrivendo.
</translation>
    </message>
</context>
<context>
    <name>parlivo::TextPages</name>
    <message>
        <source>Tieni premuto ⌥Spazio, parla, rilascia:
il testo appare dove stai scrivendo.
Tutto in locale — la tua voce non lascia mai questo Mac.</source>
        <translation>Tieni premuto %1, parla, rilascia:
il testo appare dove stai scrivendo.
Tutto in locale — la tua voce non lascia mai questo computer.</translation>
    </message>
    <message>
        <source>Apri una qualsiasi app dove si scrive,
tieni premuto ⌥Spazio e detta la tua prima frase.

Mi trovi nella barra dei menu in alto 🎙️ — lì ci sono Impostazioni e feedback.
Puoi cambiare livello di efficacia quando vuoi dalle Impostazioni.</source>
        <translation>Apri una qualsiasi app dove si scrive,
tieni premuto %1 e detta la tua prima frase.

Mi trovi nel pannello 🎙️ — lì ci sono Impostazioni e feedback.
Puoi cambiare livello di efficacia quando vuoi dalle Impostazioni.</translation>
    </message>
</context>
<context>
    <name>parlivo::OnboardingView</name>
    <message>
        <source>Serve per registrare la tua voce mentre detti.
L&apos;audio viene trascritto sul Mac e subito cancellato.</source>
        <translation>Serve per registrare la tua voce mentre detti.
L&apos;audio viene trascritto su questo computer e subito cancellato.</translation>
    </message>
    <message>
        <source>Serve per digitare il testo al posto tuo nell&apos;app attiva.
Senza questo permesso Parlivo non può scrivere.

Si aprono le Impostazioni: attiva Parlivo nell&apos;elenco.</source>
        <translation>Serve per digitare il testo al posto tuo nell&apos;app attiva.
Senza questo permesso Parlivo non può scrivere.

Si apre una guida: spiega come ottenerlo in questa sessione.</translation>
    </message>
    <message>
        <source>Apri Impostazioni</source>
        <translation>Apri la guida</translation>
    </message>
</context>
<context>
    <name>parlivo::FeedbackView</name>
    <message>
        <source>Inviamo solo: valutazione, testo, email se inserita, versione app e macOS. Nient&apos;altro.</source>
        <translation>Inviamo solo: valutazione, testo, email se inserita, versione app e sistema operativo. Nient&apos;altro.</translation>
    </message>
</context>
</TS>
