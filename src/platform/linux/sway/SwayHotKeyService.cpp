// SPDX-License-Identifier: MIT
#include "platform/linux/sway/SwayHotKeyService.h"

#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/sway/SwayConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace parlivo::sway {

class SwayHotKeyService::Registration : public HotKeyRegistration {
  public:
    Registration(SwayHotKeyService& service, Binding binding)
        : service_(service), binding_(std::move(binding)) {
        service_.registrations_.push_back(this);
    }
    ~Registration() override {
        std::erase(service_.registrations_, this);
        if (service_.waitForRelease()) service_.unbind(binding_);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    const Binding& binding() const { return binding_; }

  private:
    SwayHotKeyService& service_;
    const Binding binding_;
};

SwayHotKeyService::SwayHotKeyService(QString socketPath, std::function<void()> tapNoOpKey,
                                     std::unique_ptr<KeyLayout> layout)
    : socketPath_(std::move(socketPath)),
      tapNoOpKey_(std::move(tapNoOpKey)),
      layout_(std::move(layout)),
      record_(socketPath_) {}

SwayHotKeyService::~SwayHotKeyService() = default;

bool SwayHotKeyService::ensureConversation() {
    if (commands_ && events_ && !commands_->isBroken() && !events_->isBroken()) return true;
    notifier_.reset();
    commands_ = SwayIpc::connect(socketPath_);
    events_ = SwayIpc::connect(socketPath_);
    if (!commands_ || !events_) return false;
    // "workspace" tells of reloads, too.
    const auto reply = events_->request(MessageType::subscribe, R"(["binding","workspace"])");
    if (!reply || !QJsonDocument::fromJson(*reply).object().value(QLatin1String("success")).toBool())
        return false;
    notifier_ = std::make_unique<QSocketNotifier>(events_->descriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { takeEvents(); });
    return true;
}

std::unique_ptr<HotKeyHandler> SwayHotKeyService::installHandler(Edge pressed, Edge released,
                                                                 Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result SwayHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                        HotKeyIdentity) {
    const auto binding = bindingOf(key, modifiers);
    if (!binding) return HotKeyRefusal{EINVAL, HotKeyRefusal::Reason::Unusable};
    if (!ensureConversation()) return HotKeyRefusal{ENOTCONN, HotKeyRefusal::Reason::Unusable};
    if (isUsers(key, modifiers)) return HotKeyRefusal{EBUSY};
    if (registrations_.empty()) undoLeftBindings();
    if (const int error = bind(*binding); error != 0) return HotKeyRefusal{error};
    return std::make_unique<Registration>(*this, *binding);
}

/// sway would give us the combination all the same, and forget a binding by position that was there before.
bool SwayHotKeyService::isUsers(KeyCode key, HotKeyModifiers modifiers) {
    const auto reply = commands_->request(MessageType::getConfiguration, {});
    const auto position = KeyPositions::kernelCodeOf(key);
    if (!reply || !position) return false;
    const QString text = QJsonDocument::fromJson(*reply).object().value(QLatin1String("config")).toString();
    const QString symbol = layout_ ? layout_->symbolName(*position) : QString();
    return configurationBinds(
        text, {.modifiers = modifiers, .code = *position + KeyPositions::displayOffset, .symbol = symbol});
}

std::optional<KeyCode> SwayHotKeyService::keyCodeOf(std::uint32_t nativeScanCode) const {
    return KeyPositions::keyCodeOfDisplays(nativeScanCode);
}

QString SwayHotKeyService::keyLabel(KeyCode key) {
    const auto position = KeyPositions::kernelCodeOf(key);
    return layout_ && position ? layout_->label(*position) : QString();
}

int SwayHotKeyService::bind(const Binding& binding) {
    auto chords = record_.chords();
    if (!chords.contains(binding.chord)) record_.write(chords << binding.chord);
    if (commands_->run(binding.bindPress()) && commands_->run(binding.bindRelease())) return 0;
    unbind(binding);
    return commands_->isBroken() ? ENOTCONN : EBUSY;
}

void SwayHotKeyService::unbind(const Binding& binding) {
    commands_->run(binding.unbindPress());
    commands_->run(binding.unbindRelease());
    auto chords = record_.chords();
    chords.removeAll(binding.chord);
    record_.write(chords);
}

/// sway keeps pointing at the release binding of a key that is down, and would use it after it is gone. One
/// that stays down for long keeps its binding, which the next registration undoes.
bool SwayHotKeyService::waitForRelease() {
    constexpr auto longest = std::chrono::seconds(2);
    constexpr int pollInterval = 20;  // ms
    const bool wasHeld = edges_.isHeld();
    const auto end = std::chrono::steady_clock::now() + longest;
    while (edges_.isHeld() && !events_->isBroken() && std::chrono::steady_clock::now() < end) {
        pollfd descriptor{events_->descriptor(), POLLIN, 0};
        poll(&descriptor, 1, pollInterval);
        takeEvents();
    }
    const bool comesUpLater = wasHeld && edges_.isHeld();
    edges_.release();
    return !comesUpLater;
}

void SwayHotKeyService::undoLeftBindings() {
    const auto chords = record_.chords();
    for (const QByteArray& chord : chords) unbind(Binding{chord});
}

void SwayHotKeyService::takeEvents() {
    const auto events = events_->takeEvents();
    for (const Message& event : events) handle(event);
    if (events_->isBroken()) conversationEnded();
}

void SwayHotKeyService::handle(const Message& event) {
    const QJsonObject content = QJsonDocument::fromJson(event.payload).object();
    if (event.type == MessageType::workspaceEvent) {
        if (content.value(QLatin1String("change")) == QLatin1String("reload")) reloaded();
        return;
    }
    if (event.type != MessageType::bindingEvent) return;
    const QJsonObject binding = content.value(QLatin1String("binding")).toObject();
    const QString command = binding.value(QLatin1String("command")).toString();
    if (command.endsWith(QLatin1String(pressMark))) {
        // First: a quick user lets go of Alt while the press is dealt with.
        if (tapNoOpKey_ &&
            binding.value(QLatin1String("event_state_mask")).toArray().contains(QLatin1String("Mod1")))
            tapNoOpKey_();
        edges_.press();
    } else if (command.endsWith(QLatin1String(releaseMark))) {
        edges_.release();
    }
}

void SwayHotKeyService::reloaded() {
    rebind();
    if (const auto mayBeFree = mayBeFree_) mayBeFree();
}

/// After a reload only the bindings of the configuration are left.
void SwayHotKeyService::rebind() {
    edges_.release();
    for (const Registration* registration : registrations_) {
        if (const int error = bind(registration->binding()); error != 0) edges_.tell(HotKeyRefusal{error});
    }
}

void SwayHotKeyService::conversationEnded() {
    notifier_->setEnabled(false);
    edges_.release();
    if (!registrations_.empty()) edges_.tell(HotKeyRefusal{ENOTCONN});
}

}  // namespace parlivo::sway
