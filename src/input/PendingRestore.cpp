#include "input/PendingRestore.h"

#include <utility>

namespace parlivo {

namespace {

PasteboardTexts usersOwn(PasteboardTexts present, const PendingRestore::Kept& earlier) {
    const auto places = present.keys();
    for (const PasteboardPlace place : places) {
        if (present.value(place) != earlier.pasted) continue;
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
    kept_ = Kept{pasted, std::move(present)};
    return ++last_;
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
