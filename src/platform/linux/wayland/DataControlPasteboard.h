// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;

namespace parlivo::wayland {

/// Clipboard and primary selection of a Wayland session, which can be read and set without the focus through
/// zwlr_data_control_v1. What is set stays as long as this object lives and the compositor does; one that is
/// started anew is connected to with the next use.
class DataControlPasteboard : public Pasteboard {
  public:
    /// Null if no compositor answers or if it lacks the protocol.
    static std::unique_ptr<DataControlPasteboard> open();

    ~DataControlPasteboard() override;
    DataControlPasteboard(const DataControlPasteboard&) = delete;
    DataControlPasteboard& operator=(const DataControlPasteboard&) = delete;

    PasteboardTexts texts() override;
    bool setText(const QString& text, History history) override;
    void restore(const PasteboardTexts& texts) override;
    std::optional<int> timesRead() override { return timesRead_; }

  private:
    class Offer;
    class Source;
    struct Events;

    explicit DataControlPasteboard(std::unique_ptr<WaylandConnection> connection);
    /// Runs a job on the connection's thread, on a new connection if the compositor has ended the last one.
    void run(const WaylandConnection::Job& job);
    bool start();
    /// On the connection's thread, or when that has ended.
    void destroyAll();

    // On the connection's thread.
    bool bindAll();
    void put(PasteboardPlace place, const QString& text, History history);
    void placeChanged(PasteboardPlace place, zwlr_data_control_offer_v1* handle);
    void sourceReplaced(const Source* source);
    /// The text of a place of ours, or in `pipe` the end from which the text of another owner comes.
    struct Reading {
        PasteboardPlace place;
        std::optional<QString> own;
        UniqueFd pipe;
    };
    std::vector<Reading> startReading();

    std::mutex mutex_;
    std::unique_ptr<WaylandConnection> connection_;  // replaced under mutex_, when its thread has ended
    zwlr_data_control_manager_v1* manager_ = nullptr;
    zwlr_data_control_device_v1* device_ = nullptr;
    std::map<zwlr_data_control_offer_v1*, std::unique_ptr<Offer>> offers_;
    std::map<PasteboardPlace, zwlr_data_control_offer_v1*> present_;
    std::map<PasteboardPlace, std::unique_ptr<Source>> ours_;
    std::atomic<int> timesRead_ = 0;
};

}  // namespace parlivo::wayland
