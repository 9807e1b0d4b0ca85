// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <iosfwd>

namespace parlivo::desktop {

/// What a running program takes from the system.
struct Footprint {
    qint64 resident = 0;  ///< memory, in bytes
    qint64 descriptors = 0;
    /// Its direct children, as "name state"; a zombie's state is Z.
    QStringList children;
    /// Everything below the private folders, the stubs' own notes left out.
    QStringList files;

    static Footprint of(pid_t process);
};

std::ostream& operator<<(std::ostream& stream, const Footprint& footprint);

}  // namespace parlivo::desktop
