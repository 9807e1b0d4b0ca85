// SPDX-License-Identifier: MIT
#include "stages/Stages.h"

#include "audio/CaptureFile.h"
#include "engines/Cleaner.h"
#include "engines/CleanupPrompt.h"
#include "engines/Transcriber.h"
#include "models/ModelCatalog.h"
#include "platform/Platform.h"
#include "platform/linux/base/JsonUserDefaults.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "settings/Config.h"
#include "support/FakePlatform.h"
#include "support/MainQueue.h"
#include "support/Text.h"
#include "ui/settings/DictionaryTab.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <random>
#include <stdexcept>

namespace parlivo::bench {

namespace {

using Work = Stage::Work;

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

/// A folder that lasts as long as the work does.
class Folder {
  public:
    QString path(const char* name) const { return folder_->filePath(QString::fromLatin1(name)); }
    QString path() const { return folder_->path(); }

  private:
    std::shared_ptr<QTemporaryDir> folder_ = std::make_shared<QTemporaryDir>();
};

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
            "a file is not written");
}

/// Words as they come in Italian prose, exactly so many characters.
QString prose(qint64 characters) {
    const QString sentence = QStringLiteral("Perché la città è più bella di lunedì, disse; e così andò. ");
    return sentence.repeated(characters / sentence.size() + 1).left(characters - 1) + QLatin1Char('.');
}

QString terms(qint64 count) {
    QString text;
    for (qint64 i = 0; i < count; ++i) text += QStringLiteral("Termine%1\n").arg(i);
    return text;
}

// Recordings.

void record(const QString& path, qint64 seconds) {
    constexpr std::size_t rate = 48'000;
    std::mt19937 random(1);
    std::normal_distribution<float> loudness(0.0F, 0.1F);
    std::vector<float> second(2 * rate);
    for (float& sample : second) sample = loudness(random);
    CaptureFile file(path, {rate, 2});
    for (qint64 i = 0; i < seconds; ++i) file.append(second, rate);
}

Work conversion(qint64 seconds) {
    const Folder folder;
    record(folder.path("capture.caf"), seconds);
    return
        [folder] { SndfileWavConverter().convert(folder.path("capture.caf"), folder.path("capture.wav")); };
}

// Engines that answer at once.

fake::Bundle& bundle() {
    return dynamic_cast<fake::Bundle&>(Platform::current().bundle());
}

/// A server that answers with a text.
void standIn(const char* resource, const QString& model, const QString& answer) {
    bundle().resources[QString::fromLatin1(resource)] = QStringLiteral(PARLIVO_STUB_ENGINE);
    write(model, QJsonDocument(QJsonObject{{QStringLiteral("text"), answer}}).toJson());
}

void standInForWhisper(const Folder& folder, const QString& answer) {
    // Not in the models folder, where a model counts by its exact size.
    const QString model = folder.path("ggml-model.bin");
    bundle().resources[QStringLiteral("ggml-model.bin")] = model;
    standIn("whisper-server", model, answer);
}

Work recognition(const Folder& folder, qint64 seconds, const QString& answer) {
    standInForWhisper(folder, answer);
    write(folder.path("recording.wav"), QByteArray(44 + 32'000 * seconds, '\0'));
    return [folder, answer] {
        require(Transcriber::transcribe(folder.path("recording.wav")) == answer, "another text came back");
    };
}

Work recognitionOfLength(qint64 seconds) {
    return recognition({}, seconds, QStringLiteral("Ciao"));
}

Work recognitionOfText(qint64 characters) {
    return recognition({}, 1, prose(characters));
}

Work recognitionWithGlossary(qint64 count) {
    Config::set(Settings::dictionary, terms(count));
    return recognition({}, 1, QStringLiteral("Ciao"));
}

// Texts.

Work cleaning(qint64 characters) {
    const Folder folder;
    const QString raw = prose(characters);
    Config::set(Settings::modelsDir, folder.path());
    Config::set(Settings::cleanupTier, QStringLiteral("light"));
    const QString id = QStringLiteral("light");
    const auto& tier = ModelCatalog::cleanupTier(id);
    const QString answer = QLatin1Char('E') + raw;
    standIn("llama-server", folder.path() + QLatin1Char('/') + tier.fileName, answer);
    return [folder, raw, answer] { require(Cleaner::clean(raw) == answer, "the text was not cleaned"); };
}

Work typingPreparation(qint64 characters) {
    const QString text = prose(characters);
    return [text] {
        require(Platform::current().keyboard().makeSource(text) != nullptr, "the text cannot be typed");
        qint64 count = 0;
        Text::forEachCharacter(text, [&count](QStringView) { return ++count > 0; });
        require(count == text.size(), "characters are lost");
    };
}

Work pasting(qint64 characters) {
    const QString text = prose(characters);
    return [text] {
        require(Platform::current().pasteboard().setText(text, Pasteboard::History::Omit), "no clipboard");
        QProcess reader;
        reader.start(QStringLiteral("xclip"),
                     {QStringLiteral("-out"), QStringLiteral("-selection"), QStringLiteral("clipboard"),
                      QStringLiteral("-target"), QStringLiteral("UTF8_STRING")});
        require(reader.waitForFinished(-1), "xclip does not run");
        require(reader.readAllStandardOutput() == text.toUtf8(), "another text was pasted");
    };
}

// Dictionaries.

Work prompt(qint64 count) {
    Config::set(Settings::dictionary, terms(count));
    return [count] {
        require(Config::builtinPrompt(CleanupLevel::Medium).size() > 8 * count, "the prompt lacks terms");
    };
}

Work storing(qint64 count) {
    const Folder folder;
    const auto store =
        std::make_shared<JsonUserDefaults>(folder.path("settings.json"), [](const QString&) {});
    store->setValue(Settings::dictionary.key, terms(count));
    return [folder, store, number = 0]() mutable {
        store->setValue(Settings::dictationCount.key, ++number);
        store->flush();
        require(store->value(Settings::dictationCount.key).toInt() == number, "the setting was not stored");
    };
}

/// A key pressed in the list of terms, until it is stored and the page is ready for the next one.
Work editing(qint64 count) {
    Config::set(Settings::dictionary, terms(count));
    std::shared_ptr<QWidget> page;
    MainQueue::sync([&page] {
        page = {new DictionaryTab, [](QWidget* widget) { widget->deleteLater(); }};
        page->show();
    });
    return [page, expected = terms(count)]() mutable {
        MainQueue::sync([&page] {
            auto& editor = *page->findChild<QPlainTextEdit*>();
            editor.moveCursor(QTextCursor::End);
            editor.insertPlainText(QStringLiteral("x"));
        });
        MainQueue::sync([] {});
        expected += QLatin1Char('x');
        require(Config::get(Settings::dictionary) == expected, "the key was not stored");
    };
}

}  // namespace

const std::vector<Stage>& stages() {
    static const std::vector<qint64> lengths{5, 60, 600, 3'600};
    static const std::vector<qint64> texts{100, 1'000, 10'000, 100'000, 1'000'000};
    static const std::vector<qint64> dictionaries{10, 100, 1'000, 10'000, 100'000};
    static const std::vector<Stage> all{
        {"convert", "capture file to WAV", "seconds", lengths, conversion},
        {"recognise", "WAV to the recogniser, and its reply", "seconds", lengths, recognitionOfLength},
        {"transcript", "reply of the recogniser", "characters", texts, recognitionOfText},
        {"clean", "cleaning", "characters", texts, cleaning},
        {"type", "made ready to be typed", "characters", texts, typingPreparation},
        {"paste", "pasted, and read by xclip", "characters", texts, pasting},
        {"prompt", "prompt of the cleaning", "terms", dictionaries, prompt},
        {"glossary", "request with a glossary", "terms", dictionaries, recognitionWithGlossary},
        {"store", "one setting stored and read", "terms", dictionaries, storing},
        {"edit", "one key in the dictionary's page", "terms", dictionaries, editing},
    };
    return all;
}

}  // namespace parlivo::bench
