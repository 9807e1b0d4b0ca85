<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: MIT -->
<!-- Italian to Italian: what the interface says on Linux where its own words name the machine, the system, the menu bar,
     the permission lists or a key of macOS. "%1" in a sentence that has none of its own is the chosen hot key
     (src/input/HotKeyTitle.h); in a preset's name it is what the layout prints on the key.
     And the letters by which Alt reaches what stands in the settings, the first run and the feedback, after an ampersand; on
     macOS there are none. Within a page each is there once; the four tabs have G, D, P and Z, the first run's foot C, S and I. -->
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
        <translation>Apri la &amp;guida</translation>
    </message>
    <message>
        <source>Consenti microfono</source>
        <translation>Consenti &amp;microfono</translation>
    </message>
    <message>
        <source>Salta</source>
        <translation>&amp;Salta</translation>
    </message>
    <message>
        <source>Continua</source>
        <translation>&amp;Continua</translation>
    </message>
    <message>
        <source>Inizia a dettare</source>
        <translation>&amp;Inizia a dettare</translation>
    </message>
</context>
<context>
    <name>parlivo::FolderPage</name>
    <message>
        <source>Cambia…</source>
        <translation>Cam&amp;bia…</translation>
    </message>
</context>
<context>
    <name>parlivo::DownloadPage</name>
    <message>
        <source>Riprova</source>
        <translation>&amp;Riprova</translation>
    </message>
    <message>
        <source>Più tardi</source>
        <translation>Più &amp;tardi</translation>
    </message>
</context>
<context>
    <name>parlivo::MicrophoneMeter</name>
    <message>
        <source>Impostazioni audio</source>
        <translation>Impostazioni &amp;audio</translation>
    </message>
</context>
<context>
    <name>parlivo::ReadyPage</name>
    <message>
        <source>Scegli la scorciatoia…</source>
        <translation>Scegli &amp;la scorciatoia…</translation>
    </message>
</context>
<context>
    <name>parlivo::FeedbackView</name>
    <message>
        <source>Annulla</source>
        <translation>&amp;Annulla</translation>
    </message>
    <message>
        <source>Invia feedback</source>
        <translation>&amp;Invia feedback</translation>
    </message>
    <message>
        <source>Chiudi</source>
        <translation>&amp;Chiudi</translation>
    </message>
    <message>
        <source>Inviamo solo: valutazione, testo, email se inserita, versione app e macOS. Nient&apos;altro.</source>
        <translation>Inviamo solo: valutazione, testo, email se inserita, versione app e sistema operativo. Nient&apos;altro.</translation>
    </message>
</context>
<context>
    <name>parlivo::SettingsView</name>
    <message>
        <source>Generale</source>
        <translation>&amp;Generale</translation>
    </message>
    <message>
        <source>Dettatura</source>
        <translation>&amp;Dettatura</translation>
    </message>
    <message>
        <source>Pulizia AI</source>
        <translation>&amp;Pulizia AI</translation>
    </message>
    <message>
        <source>Dizionario</source>
        <translation>Di&amp;zionario</translation>
    </message>
</context>
<context>
    <name>parlivo::GeneralTab</name>
    <message>
        <source>Avvia Parlivo al login</source>
        <translation>Avvia Parlivo al &amp;login</translation>
    </message>
    <message>
        <source>Suoni di inizio/fine registrazione</source>
        <translation>&amp;Suoni di inizio/fine registrazione</translation>
    </message>
    <message>
        <source>Mostra il riquadro con la waveform</source>
        <translation>Mostra il riquadro con la &amp;waveform</translation>
    </message>
    <message>
        <source>Notifiche degli errori</source>
        <translation>&amp;Notifiche degli errori</translation>
    </message>
    <message>
        <source>Modalità debug (salva le trascrizioni nel log)</source>
        <translation>Modalità de&amp;bug (salva le trascrizioni nel log)</translation>
    </message>
    <message>
        <source>Cambia…</source>
        <translation>&amp;Cambia…</translation>
    </message>
    <message>
        <source>Apri il manuale</source>
        <translation>Apri il &amp;manuale</translation>
    </message>
    <message>
        <source>Invia feedback…</source>
        <translation>Invia &amp;feedback…</translation>
    </message>
    <message>
        <source>Esci da Parlivo</source>
        <translation>&amp;Esci da Parlivo</translation>
    </message>
</context>
<context>
    <name>parlivo::DictationTab</name>
    <message>
        <source>Scorciatoia</source>
        <translation>&amp;Scorciatoia</translation>
    </message>
    <message>
        <source>Lingua</source>
        <translation>&amp;Lingua</translation>
    </message>
</context>
<context>
    <name>parlivo::MicrophonePicker</name>
    <message>
        <source>Microfono</source>
        <translation>&amp;Microfono</translation>
    </message>
</context>
<context>
    <name>parlivo::KeyCaptureButton</name>
    <message>
        <source>Scegli la combinazione…</source>
        <translation>Scegli la c&amp;ombinazione…</translation>
    </message>
</context>
<context>
    <name>parlivo::TierPicker</name>
    <message>
        <source>Scarica</source>
        <translation>S&amp;carica</translation>
    </message>
</context>
<context>
    <name>parlivo::CleanupTab</name>
    <message>
        <source>Modello Ollama</source>
        <translation>&amp;Modello Ollama</translation>
    </message>
    <message>
        <source>Pulisci solo testi oltre </source>
        <translation>Pulisci &amp;solo testi oltre </translation>
    </message>
    <message>
        <source>Usa prompt personalizzato</source>
        <translation>&amp;Usa prompt personalizzato</translation>
    </message>
    <message>
        <source>Apri prompt.txt…</source>
        <translation>&amp;Apri prompt.txt…</translation>
    </message>
</context>
</TS>
