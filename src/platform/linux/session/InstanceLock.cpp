#include "platform/linux/session/InstanceLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace parlivo {

InstanceLock::~InstanceLock() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool InstanceLock::take() {
    if (descriptor_ >= 0) return true;
    descriptor_ = open(QFile::encodeName(file_).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor_ < 0) return true;
    if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return true;
    close(descriptor_);
    descriptor_ = -1;
    return false;
}

}  // namespace parlivo
