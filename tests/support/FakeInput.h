// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/KeyboardSynthesizer.h"
#include "platform/Pasteboard.h"

#include <QStringList>

#include <atomic>
#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

/// What the fake platform (FakePlatform.h) has for input: the hot key, the keyboard and the pasteboard.
namespace parlivo::fake {

class HotKeys : public parlivo::HotKeyService {
  public:
    struct Registered {
        KeyCode key = 0;
        HotKeyModifiers modifiers = 0;
        HotKeyIdentity identity;
    };

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressedEdge, Edge releasedEdge,
                                                  Change change) override;
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    QString keyLabel(KeyCode key) override { return printed.contains(key) ? printed[key] : QString(); }

    Contention contention() const override { return contended; }
    Edges edges() const override { return told; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;
    void watchRefused(std::function<void()> newMayBeFree) override { mayBeFree = std::move(newMayBeFree); }
    bool anyMayBeFree(const std::vector<HotKeyCombination>& refused) override;

    void press() const;
    void release() const;

    /// Asked instead, if set.
    parlivo::HotKeyService* real = nullptr;
    std::map<KeyCode, QString> printed;  ///< on the keys
    /// The status of the next registrations; 0 accepts.
    int refuseWith = 0;
    HotKeyRefusal::Reason refusalReason = HotKeyRefusal::Reason::Taken;  ///< beside `refuseWith`
    /// Combinations that another program holds: refused with status 10, whatever `refuseWith` says.
    std::set<std::pair<KeyCode, HotKeyModifiers>> taken;
    Contention contended = Contention::Rare;
    Edges told = Edges::Both;
    std::function<void()> mayBeFree;  ///< set while refused combinations are watched
    std::size_t questions = 0;        ///< whether refused ones may be free
    /// By native scan codes.
    std::map<std::uint32_t, KeyCode> positions;
    std::vector<Registered> registered;  ///< those in force
    QStringList calls;                   ///< "install", "register 49 2048", "unregister", "remove"
    Edge pressed;
    Edge released;
    Change changed;
};

/// Key strokes as a list of words: "return", "tab", "key 9 1048576", or the character in angle quotes.
class Keyboard : public parlivo::KeyboardSynthesizer {
  public:
    void prepare() override {
        ++prepared;
        if (real) real->prepare();
    }
    bool typesText() const override { return real ? real->typesText() : types.load(); }
    std::unique_ptr<KeyEventSource> makeSource(QStringView text) override;
    std::unique_ptr<KeyEventSource> makeShortcutSource() override;

    void record(const QString& stroke);
    QStringList strokes() const;
    /// Called before each stroke, on the thread that posts it. Set before there are any.
    std::function<void()> beforeStroke;
    /// All characters typed, line ends and tabs included.
    QString typed() const;

    /// Asked instead, if set.
    parlivo::KeyboardSynthesizer* real = nullptr;
    std::atomic<bool> types = true;
    std::atomic<bool> canType = true;
    std::atomic<bool> canSendShortcuts = true;
    /// Characters of this kind are skipped, and from this stroke on all fail.
    std::atomic<char16_t> skipped = 0;
    std::atomic<qsizetype> failsAfter = std::numeric_limits<qsizetype>::max();
    std::atomic<Posted> failure = Posted::Failed;
    std::atomic<TextIntake> intake = TextIntake::Characters;
    std::atomic<int> prepared = 0;
    std::atomic<int> sourcesMade = 0;
    std::atomic<int> sourcesAlive = 0;

  private:
    mutable std::mutex mutex_;
    QStringList strokes_;  // under mutex_
};

class Pasteboard : public parlivo::Pasteboard {
  public:
    PasteboardTexts texts() override;
    bool setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;

    /// What the user (or another program) put there.
    void selectionTaken(const PasteboardTexts& texts);

    struct Set {
        QString text;
        History history;
    };
    std::vector<Set> sets() const;
    int restores() const;
    std::optional<int> timesRead() override {
        if (real) return real->timesRead();
        return tellsReadings ? std::optional(readings.load()) : std::nullopt;
    }
    std::atomic<bool> tellsReadings = false;
    std::atomic<int> readings = 0;
    /// Whether line ends become line feeds, as in X selections.
    std::atomic<bool> convertsLineEnds = false;
    /// Whatever is to be put there.
    std::atomic<bool> refuses = false;

    /// Asked instead, if set.
    parlivo::Pasteboard* real = nullptr;

  private:
    mutable std::mutex mutex_;
    PasteboardTexts contents_;  // under mutex_
    bool ours_ = false;         // under mutex_
    std::vector<Set> sets_;     // under mutex_
    int restores_ = 0;          // under mutex_
};

}  // namespace parlivo::fake
