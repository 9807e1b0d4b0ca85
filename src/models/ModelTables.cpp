// SPDX-License-Identifier: MIT
#include "models/ModelCatalog.h"
#include "settings/Config.h"

#include <QCoreApplication>

// The tables alone, so that a program built for a trial can be linked with others.
namespace parlivo::ModelCatalog {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::ModelCatalog)
};

QUrl hosted(const QString& path) {
    return QUrl(Config::modelHost().toString() + path);
}

QUrl recogniser(const QString& fileName) {
    return hosted(QStringLiteral("/ggerganov/whisper.cpp/resolve/main/") + fileName);
}

std::vector<Entry> makeAsrTiers() {
    const QString fast = QStringLiteral("ggml-large-v3-turbo-q5_0.bin");
    const QString best = QStringLiteral("ggml-large-v3-turbo-q8_0.bin");
    return {
        {QStringLiteral("fast"), Texts::tr("Veloce"),
         Texts::tr("Whisper turbo q5 · 574 MB · ottimo, più leggero"), fast, recogniser(fast), 574'041'195,
         "e050f7970618a659205450ad97eb95a18d69c9ee"},
        {QStringLiteral("best"), Texts::tr("Precisa"),
         Texts::tr("Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)"), best, recogniser(best),
         874'188'075},
    };
}

std::vector<Entry> makeCleanupTiers() {
    const QString light = QStringLiteral("qwen2.5-1.5b-instruct-q4_k_m.gguf");
    const QString full = QStringLiteral("gemma-3-4b-it-Q4_K_M.gguf");
    return {
        {QStringLiteral("none"),
         Texts::tr("Nessuna"),
         Texts::tr("Solo Whisper · 0 MB · punteggiatura base, nessun download"),
         {},
         Config::siteBase(),
         0},
        {QStringLiteral("light"), Texts::tr("Leggera"),
         Texts::tr("Qwen 2.5 1.5B · 1.1 GB · filler e punteggiatura, veloce"), light,
         hosted(QStringLiteral("/Qwen/Qwen2.5-1.5B-Instruct-GGUF/resolve/main/") + light), 1'117'320'736},
        {QStringLiteral("full"), Texts::tr("Completa"),
         Texts::tr("Gemma 3 4B · 2.5 GB · qualità massima (consigliata)"), full,
         hosted(QStringLiteral("/ggml-org/gemma-3-4b-it-GGUF/resolve/main/") + full), 2'489'757'856},
    };
}

}  // namespace

const std::vector<Entry>& asrTiers() {
    static const std::vector<Entry> tiers = makeAsrTiers();
    return tiers;
}

const std::vector<Entry>& cleanupTiers() {
    static const std::vector<Entry> tiers = makeCleanupTiers();
    return tiers;
}

}  // namespace parlivo::ModelCatalog
