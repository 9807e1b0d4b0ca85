// SPDX-License-Identifier: MIT
#include "input/PendingRestore.h"

#include <utility>

namespace parlivo {

namespace {

/// Pasteboards may hold line ends in the form of their system.
bool sameText(QString a, QString b) {
    const auto crLf = QStringLiteral("\r\n");
    const auto lineFeed = QStringLiteral("\n");
    return a.replace(crLf, lineFeed) == b.replace(crLf, lineFeed);
}

PasteboardTexts usersOwn(PasteboardTexts present, const PendingRestore::Kept& earlier) {
    const auto places = present.keys();
    for (const PasteboardPlace place : places) {
        if (!sameText(present.value(place), earlier.pasted)) continue;
        present.remove(place);
        if (earlier.before.contains(place)) present.insert(place, earlier.before.value(place));
    }
    return present;
}

}  // namespace

PendingRestore::Ticket PendingRestore::keep(const QString& pasted, PasteboardTexts present,
                                            const std::optional<Kept>& calledOff) {
    if (calledOff) present = usersOwn(std::move(present), *calledOff);
    const std::lock_guard lock(mutex_);
    kept_ = Kept{pasted, std::move(present), {}};
    return ++last_;
}

void PendingRestore::setDue(Ticket ticket, Clock::TimePoint due) {
    const std::lock_guard lock(mutex_);
    if (ticket == last_ && kept_) kept_->due = due;
}

void PendingRestore::resume(std::optional<Kept> calledOff) {
    const std::lock_guard lock(mutex_);
    kept_ = std::move(calledOff);
}

std::optional<PendingRestore::Last> PendingRestore::last() {
    const std::lock_guard lock(mutex_);
    if (!kept_) return std::nullopt;
    return Last{last_, kept_->due};
}

std::optional<PendingRestore::Kept> PendingRestore::callOff() {
    const std::lock_guard lock(mutex_);
    return std::exchange(kept_, std::nullopt);
}

std::optional<PasteboardTexts> PendingRestore::take(Ticket ticket) {
    const std::lock_guard lock(mutex_);
    if (ticket != last_ || !kept_) return std::nullopt;
    return std::exchange(kept_, std::nullopt)->before;
}

}  // namespace parlivo
