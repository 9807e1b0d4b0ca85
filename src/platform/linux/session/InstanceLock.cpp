// SPDX-License-Identifier: MIT
#include "platform/linux/session/InstanceLock.h"

#include "support/OwnerOnly.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>

#include <utility>

namespace parlivo {

bool InstanceLock::take() {
    if (descriptor_) return true;
    UniqueFd file(::open(QFile::encodeName(file_).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                         ownerOnlyMode));
    if (file && flock(file.get(), LOCK_EX | LOCK_NB) != 0) return false;
    descriptor_ = std::move(file);
    return true;
}

}  // namespace parlivo
