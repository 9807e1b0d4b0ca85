// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/desktop/KeyLayout.h"
#include "platform/linux/sway/BindingRecord.h"
#include "platform/linux/sway/SwayBinding.h"
#include "platform/linux/sway/SwayIpc.h"

#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace parlivo::sway {

/// Hot keys by bindings that are made in the running sway over its socket, and undone at the end. sway tells
/// of both edges, also when the modifier is released first.
///
/// A binding belongs to no client: those of a killed program stay, without effect but with the key taken.
/// They are recorded in a file of the session, and the next start undoes them; so does a reload of sway's
/// configuration, after which ours are made again.
class SwayHotKeyService : public HotKeyService {
  public:
    /// For the sway that listens on this socket (variable SWAYSOCK). It is asked at the first registration.
    /// `tapNoOpKey` is called at each press of a hot key with Alt: the focused window sees Alt go down and up
    /// with no key between, which opens the menu bar of many programs.
    /// With a null `layout` only bindings by position are known to be the user's.
    explicit SwayHotKeyService(QString socketPath, std::function<void()> tapNoOpKey = nullptr,
                               std::unique_ptr<KeyLayout> layout = nullptr);
    ~SwayHotKeyService() override;
    SwayHotKeyService(const SwayHotKeyService&) = delete;
    SwayHotKeyService& operator=(const SwayHotKeyService&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    /// The status is an errno: EINVAL for a key that no keyboard has, EBUSY if sway's configuration binds the
    /// combination or sway refuses it, ENOTCONN if it does not answer.
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Contention contention() const override { return Contention::Common; }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;
    void watchRefused(std::function<void()> mayBeFree) override { mayBeFree_ = std::move(mayBeFree); }
    QString keyLabel(KeyCode key) override;

  private:
    class Registration;

    bool ensureConversation();
    bool isUsers(KeyCode key, HotKeyModifiers modifiers);
    /// 0 or the errno.
    int bind(const Binding& binding);
    void unbind(const Binding& binding);
    bool waitForRelease();
    void undoLeftBindings();
    void takeEvents();
    void handle(const Message& event);
    void reloaded();
    void rebind();
    void conversationEnded();

    const QString socketPath_;
    const std::function<void()> tapNoOpKey_;
    const std::unique_ptr<KeyLayout> layout_;
    const BindingRecord record_;
    std::function<void()> mayBeFree_;
    // Replies and events come on connections of their own, so that waiting for one delays none of the other.
    std::optional<SwayIpc> commands_;
    std::optional<SwayIpc> events_;
    std::unique_ptr<QSocketNotifier> notifier_;
    HotKeyEdges edges_;
    std::vector<Registration*> registrations_;
};

}  // namespace parlivo::sway
