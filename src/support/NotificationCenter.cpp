#include "support/NotificationCenter.h"

#include <utility>
#include <vector>

namespace parlivo::NotificationCenter {

namespace {

struct Observer {
    QString name;
    Lifeline::Watch owner;
    std::function<void()> notify;
};

std::vector<Observer>& observers() {
    static std::vector<Observer> all;
    return all;
}

}  // namespace

void observe(const QString& name, const Lifeline::Watch& owner, std::function<void()> observer) {
    std::erase_if(observers(), [](const Observer& other) { return other.owner.expired(); });
    observers().push_back({name, owner, std::move(observer)});
}

void post(const QString& name) {
    // A copy: an observer may itself observe.
    const std::vector<Observer> present = observers();
    for (const Observer& observer : present) {
        if (observer.name == name && !observer.owner.expired()) observer.notify();
    }
}

}  // namespace parlivo::NotificationCenter
