// SPDX-License-Identifier: MIT

// The catalogue of the trial program: the tiers of the real one, with small files in place of theirs. The two
// recommended ones are the demonstration's models, so that the program can be used afterwards.

#include "models/ModelCatalog.h"
#include "settings/Config.h"

namespace parlivo::ModelCatalog {

namespace {

constexpr qint64 smallRecogniser = 3'000'001;
constexpr qint64 smallCleaner = 2'000'001;

QUrl hosted(const QString& fileName) {
    return QUrl(Config::modelHost().toString() + QStringLiteral("/modelli/") + fileName);
}

Entry tier(const char* id, const char* label, const char* detail, const char* fileName, qint64 size) {
    const QString name = QString::fromUtf8(fileName);
    return {.id = QString::fromUtf8(id),
            .label = QString::fromUtf8(label),
            .detail = QString::fromUtf8(detail),
            .fileName = name,
            .url = name.isEmpty() ? Config::siteBase() : hosted(name),
            .expectedSize = size};
}

}  // namespace

const std::vector<Entry>& asrTiers() {
    static const std::vector<Entry> tiers{
        tier("fast", "Veloce", "Whisper turbo q5 · 574 MB · ottimo, più leggero",
             "ggml-large-v3-turbo-q5_0.bin", smallRecogniser),
        tier("best", "Precisa", "Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)",
             "ggml-large-v3-turbo-q8_0.bin", PARLIVO_DEMO_RECOGNISER_SIZE)};
    return tiers;
}

const std::vector<Entry>& cleanupTiers() {
    static const std::vector<Entry> tiers{
        tier("none", "Nessuna", "Solo Whisper · 0 MB · punteggiatura base, nessun download", "", 0),
        tier("light", "Leggera", "Qwen 2.5 1.5B · 1.1 GB · filler e punteggiatura, veloce",
             "qwen2.5-1.5b-instruct-q4_k_m.gguf", smallCleaner),
        tier("full", "Completa", "Gemma 3 4B · 2.5 GB · qualità massima (consigliata)",
             "gemma-3-4b-it-Q4_K_M.gguf", PARLIVO_DEMO_CLEANER_SIZE)};
    return tiers;
}

}  // namespace parlivo::ModelCatalog
