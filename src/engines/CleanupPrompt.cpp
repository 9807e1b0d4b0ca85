// SPDX-License-Identifier: MIT
#include "engines/CleanupPrompt.h"

#include "settings/Config.h"
#include "support/OwnerOnly.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <optional>

namespace parlivo::Config {

namespace {

// The levels' rules follow "Regole:" on the same line, the file's on the next: the models are used to it.
const QString opening = QStringLiteral(
    "Sei un correttore di testi dettati a voce. Ricevi una trascrizione vocale grezza e restituisci SOLO il "
    "testo corretto, senza commenti.\n\nRegole:");

const QString lightRules = QStringLiteral(
    "- Aggiungi solo punteggiatura e maiuscole corrette\n"
    "- NON rimuovere né cambiare nessuna parola");

const QString mediumRules = QStringLiteral(
    "- Aggiungi punteggiatura e maiuscole corrette\n"
    "- Rimuovi i filler (ehm, cioè, tipo, allora, praticamente) solo quando sono riempitivi\n"
    "- Mantieni TUTTE le parole significative, non riassumere");

const QString highRules = QStringLiteral(
    "- Aggiungi punteggiatura e maiuscole corrette\n"
    "- Rimuovi tutti i filler (ehm, cioè, tipo, allora, praticamente) e le ripetizioni\n"
    "- Correggi errori grammaticali e sintassi involuta\n"
    "- Riorganizza leggermente le frasi se migliora la chiarezza, senza cambiare il significato\n"
    "- Vai a capo dove il discorso cambia argomento");

const QString commonRules = QStringLiteral(
    "\n- Mantieni la lingua originale del testo, non tradurre"
    "\n- Se il testo contiene una domanda, NON rispondere: correggi solo il testo"
    "\n- Non aggiungere virgolette attorno al testo");

const QString dictionaryRule = QStringLiteral("\n- Scrivi ESATTAMENTE così questi termini e nomi propri: ");

const QString closing = QStringLiteral("\n\nTrascrizione grezza:\n{TEXT}\n\nTesto corretto:");

const QString fileRules = QStringLiteral(
    "\n- Aggiungi punteggiatura e maiuscole corrette"
    "\n- Rimuovi i filler (ehm, cioè, tipo, allora, praticamente) solo quando sono riempitivi"
    "\n- Mantieni la lingua originale del testo, non tradurre"
    "\n- Mantieni TUTTE le parole significative, non riassumere"
    "\n- Se il testo contiene una domanda, NON rispondere: correggi solo il testo"
    "\n- Non aggiungere virgolette attorno al testo");

const QString& rulesOf(CleanupLevel level) {
    if (level == CleanupLevel::Light) return lightRules;
    if (level == CleanupLevel::High) return highRules;
    return mediumRules;
}

QString dictionaryClause() {
    const QStringList terms = dictionary();
    return terms.isEmpty() ? QString() : dictionaryRule + terms.join(QStringLiteral(", "));
}

/// Only a regular file is read: a pipe in its place would keep the dictation waiting.
std::optional<QString> readUtf8(const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return std::nullopt;
    // A file that ends within a character is none: a decoder with a memory would wait for the rest of it.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(file.readAll());
    if (decode.hasError()) return std::nullopt;
    return text;
}

}  // namespace

QString builtinPrompt(CleanupLevel level) {
    return opening + rulesOf(level) + commonRules + dictionaryClause() + closing;
}

QString loadPrompt() {
    if (const auto own = readUtf8(promptFile()); own && !own->trimmed().isEmpty()) return *own;
    QString text = opening + fileRules + closing;
    replaceOwnerOnlyFile(promptFile(), text.toUtf8());
    return text;
}

}  // namespace parlivo::Config
