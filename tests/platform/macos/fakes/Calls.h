// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <deque>
#include <utility>

/// What the fakes of the system's interfaces share. Main thread, except where a test uses another one alone.
namespace parlivo::mac {

/// What the adapters have called since the last `takeCalls`, one line a call, in order.
void record(const QString& call);
QStringList takeCalls();

/// Objects that the system has made for us and that we have not released yet. Releasing anything else is a
/// failure of the test.
void created(const void* object);
void released(const void* object);
int living();

/// Keeps a fake object as long as the program runs: they are small, and a use after the release is noticed.
template <typename Object>
Object* keep(Object object) {
    static std::deque<Object> objects;
    objects.push_back(std::move(object));
    return &objects.back();
}

/// Forgets everything: the beginning of a test.
void forgetCalls();

}  // namespace parlivo::mac
