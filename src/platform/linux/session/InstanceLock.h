#pragma once

#include <QString>

#include <utility>

namespace parlivo {

/// A lock on a file that the kernel lets go of however its holder ends (flock(2)).
class InstanceLock {
  public:
    explicit InstanceLock(QString file) : file_(std::move(file)) {}
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// False if another process holds it. A file that cannot be opened, or a symbolic link in its place,
    /// counts as taken by us: better two instances than none.
    bool take();

  private:
    QString file_;
    int descriptor_ = -1;
};

}  // namespace parlivo
