// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/DataControlPasteboard.h"

#include "platform/linux/wayland/ClipboardText.h"
#include "support/Clock.h"
#include "support/MainQueue.h"

#include <fcntl.h>
#include <wlr-data-control-client.h>

#include <array>
#include <chrono>
#include <utility>

namespace parlivo::wayland {

namespace {

using namespace std::chrono_literals;

/// How long the owner of a clipboard may take to give its text.
constexpr auto ownerTimeout = 1000ms;

/// How long a compositor that ended may take to be there again.
constexpr auto restartTimeout = 5s;
constexpr auto restartPollInterval = 50ms;

constexpr std::array everyPlace{PasteboardPlace::Clipboard, PasteboardPlace::PrimarySelection};

/// The main thread waits for nothing.
std::unique_ptr<WaylandConnection> openAgain() {
    const Clock::Deadline deadline(restartTimeout);
    auto connection = WaylandConnection::open();
    while (!connection && !MainQueue::isCurrent() && !deadline.passed() &&
           Clock::sleepFor(restartPollInterval))
        connection = WaylandConnection::open();
    return connection;
}

}  // namespace

/// What the owner of a place offers.
class DataControlPasteboard::Offer {
  public:
    explicit Offer(zwlr_data_control_offer_v1* handle) : handle_(handle) {
        static const zwlr_data_control_offer_v1_listener listener{
            .offer = [](void* data, zwlr_data_control_offer_v1*, const char* type) {
                static_cast<Offer*>(data)->types_.append(type);
            }};
        zwlr_data_control_offer_v1_add_listener(handle_, &listener, this);
    }
    ~Offer() { zwlr_data_control_offer_v1_destroy(handle_); }
    Offer(const Offer&) = delete;
    Offer& operator=(const Offer&) = delete;

    /// Asks for the text; owns nothing if there is none.
    UniqueFd receiveText() const {
        for (const char* type : textTypes) {
            if (!types_.contains(type)) continue;
            std::array<int, 2> ends{};
            if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
            UniqueFd readEnd(ends[0]);
            const UniqueFd writeEnd(ends[1]);
            zwlr_data_control_offer_v1_receive(handle_, type, writeEnd.get());
            return readEnd;
        }
        return {};
    }

  private:
    zwlr_data_control_offer_v1* handle_;
    QList<QByteArray> types_;
};

/// A text of ours in one place.
class DataControlPasteboard::Source {
  public:
    Source(DataControlPasteboard& pasteboard, QString text, History history)
        : pasteboard_(pasteboard),
          text_(std::move(text)),
          handle_(zwlr_data_control_manager_v1_create_data_source(pasteboard.manager_)) {
        static const zwlr_data_control_source_v1_listener listener{
            .send =
                [](void* data, zwlr_data_control_source_v1*, const char* type, std::int32_t descriptor) {
                    static_cast<Source*>(data)->send(type, UniqueFd(descriptor));
                },
            .cancelled =
                [](void* data, zwlr_data_control_source_v1*) {
                    const auto* const source = static_cast<Source*>(data);
                    source->pasteboard_.sourceReplaced(source);
                },
        };
        zwlr_data_control_source_v1_add_listener(handle_, &listener, this);
        for (const char* type : textTypes) zwlr_data_control_source_v1_offer(handle_, type);
        if (history == History::Omit) zwlr_data_control_source_v1_offer(handle_, secretHint);
    }
    ~Source() { zwlr_data_control_source_v1_destroy(handle_); }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    const QString& text() const { return text_; }
    zwlr_data_control_source_v1* handle() const { return handle_; }

  private:
    void send(QByteArrayView type, UniqueFd pipe) const {
        const bool isHint = type == secretHint;
        const QByteArray bytes = isHint ? QByteArray(secretHintValue) : text_.toUtf8();
        if (!isHint) ++pasteboard_.timesRead_;
        pasteboard_.connection_->send(std::move(pipe), bytes);
    }

    DataControlPasteboard& pasteboard_;
    const QString text_;
    zwlr_data_control_source_v1* handle_;
};

std::unique_ptr<DataControlPasteboard> DataControlPasteboard::open() {
    auto connection = WaylandConnection::open();
    if (!connection) return nullptr;
    std::unique_ptr<DataControlPasteboard> pasteboard(new DataControlPasteboard(std::move(connection)));
    return pasteboard->start() ? std::move(pasteboard) : nullptr;
}

DataControlPasteboard::DataControlPasteboard(std::unique_ptr<WaylandConnection> connection)
    : connection_(std::move(connection)) {}

DataControlPasteboard::~DataControlPasteboard() {
    // A broken connection has no thread any more that could use the objects.
    if (!connection_->run([this] { destroyAll(); })) destroyAll();
}

void DataControlPasteboard::destroyAll() {
    ours_.clear();
    offers_.clear();
    present_.clear();
    if (device_) zwlr_data_control_device_v1_destroy(std::exchange(device_, nullptr));
    if (manager_) zwlr_data_control_manager_v1_destroy(std::exchange(manager_, nullptr));
}

void DataControlPasteboard::run(const WaylandConnection::Job& job) {
    {
        const std::lock_guard lock(mutex_);
        if (connection_->run(job)) return;
    }
    auto fresh = openAgain();
    const std::lock_guard lock(mutex_);
    if (fresh && connection_->isBroken()) {
        destroyAll();
        connection_ = std::move(fresh);
        if (!start()) return;
    }
    connection_->run(job);
}

bool DataControlPasteboard::start() {
    bool started = false;
    connection_->run([&] { started = bindAll(); });
    return started;
}

bool DataControlPasteboard::bindAll() {
    constexpr std::uint32_t withPrimarySelection = 2;
    auto* const seat = connection_->bind<wl_seat>(wl_seat_interface, 1);
    manager_ = connection_->bind<zwlr_data_control_manager_v1>(zwlr_data_control_manager_v1_interface,
                                                               withPrimarySelection);
    if (!seat || !manager_) return false;
    static const zwlr_data_control_device_v1_listener listener{
        .data_offer =
            [](void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* offer) {
                auto& offers = static_cast<DataControlPasteboard*>(data)->offers_;
                offers.emplace(offer, std::make_unique<Offer>(offer));
            },
        .selection =
            [](void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* offer) {
                static_cast<DataControlPasteboard*>(data)->placeChanged(PasteboardPlace::Clipboard, offer);
            },
        .finished = [](void*, zwlr_data_control_device_v1*) {},
        .primary_selection =
            [](void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* offer) {
                static_cast<DataControlPasteboard*>(data)->placeChanged(PasteboardPlace::PrimarySelection,
                                                                        offer);
            },
    };
    device_ = zwlr_data_control_manager_v1_get_data_device(manager_, seat);
    zwlr_data_control_device_v1_add_listener(device_, &listener, this);
    wl_seat_destroy(seat);
    return connection_->roundTrip();
}

void DataControlPasteboard::placeChanged(PasteboardPlace place, zwlr_data_control_offer_v1* handle) {
    if (const auto former = present_.find(place); former != present_.end()) offers_.erase(former->second);
    if (handle)
        present_[place] = handle;
    else
        present_.erase(place);
}

void DataControlPasteboard::sourceReplaced(const Source* source) {
    std::erase_if(ours_, [source](const auto& entry) { return entry.second.get() == source; });
}

void DataControlPasteboard::put(PasteboardPlace place, const QString& text, History history) {
    auto source = std::make_unique<Source>(*this, text, history);
    if (place == PasteboardPlace::Clipboard)
        zwlr_data_control_device_v1_set_selection(device_, source->handle());
    else if (zwlr_data_control_device_v1_get_version(device_) >= 2)
        zwlr_data_control_device_v1_set_primary_selection(device_, source->handle());
    else
        return;
    ours_[place] = std::move(source);
}

PasteboardTexts DataControlPasteboard::texts() {
    std::vector<Reading> readings;
    run([&] { readings = startReading(); });
    PasteboardTexts texts;
    const Clock::Deadline deadline(ownerTimeout);
    for (const auto& [place, own, pipe] : readings) {
        const auto text = own ? own : readText(pipe, deadline);
        if (text) texts.insert(place, *text);
    }
    return texts;
}

std::vector<DataControlPasteboard::Reading> DataControlPasteboard::startReading() {
    std::vector<Reading> readings;
    for (const PasteboardPlace place : everyPlace) {
        if (const auto source = ours_.find(place); source != ours_.end()) {
            readings.push_back({place, source->second->text(), {}});
        } else if (const auto offer = present_.find(place); offer != present_.end()) {
            UniqueFd pipe = offers_.at(offer->second)->receiveText();
            if (pipe) readings.push_back({place, std::nullopt, std::move(pipe)});
        }
    }
    return readings;
}

bool DataControlPasteboard::setText(const QString& text, History history) {
    bool taken = false;
    run([&] {
        if (!device_) return;
        for (const PasteboardPlace place : everyPlace) put(place, text, history);
        taken = connection_->roundTrip();
    });
    return taken;
}

void DataControlPasteboard::restore(const PasteboardTexts& texts) {
    run([&] {
        if (!device_) return;
        for (auto entry = texts.begin(); entry != texts.end(); ++entry) {
            // A history has the text from its first stay, unless it was one that no history should have.
            if (ours_.contains(entry.key())) put(entry.key(), entry.value(), History::Omit);
        }
        connection_->roundTrip();
    });
}

}  // namespace parlivo::wayland
