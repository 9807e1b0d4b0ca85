// SPDX-License-Identifier: MIT
#include "platform/macos/fakes/Calls.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace parlivo::mac {

namespace {

QStringList calls;
std::set<const void*> objects;

}  // namespace

void record(const QString& call) {
    calls.append(call);
}

QStringList takeCalls() {
    return std::exchange(calls, {});
}

void created(const void* object) {
    objects.insert(object);
}

void released(const void* object) {
    EXPECT_EQ(objects.erase(object), 1U) << "released what is not ours: " << object;
}

int living() {
    return static_cast<int>(objects.size());
}

void forgetCalls() {
    calls.clear();
    objects.clear();
}

}  // namespace parlivo::mac
