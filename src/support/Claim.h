#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace parlivo {

/// A sign on a temporary file or folder that a living process still needs it; for everybody to see, and gone
/// with its owner however that ends (a shared flock(2) on a descriptor of its own). Any thread.
class Claim {
  public:
    /// Nothing when there is no such file, or it cannot be opened.
    static std::optional<Claim> on(const QString& path);
    ~Claim();
    Claim(Claim&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Claim& operator=(Claim&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

  private:
    explicit Claim(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

/// Makes a new file with these permissions, and returns a descriptor to read and write it with (O_CLOEXEC),
/// which claims it for as long as it, or a copy of it, is open. -1 with errno when that fails, as where there
/// is one already.
int createClaimedFile(const QString& path, unsigned permissions);

/// Makes a new folder that only the user can enter, and claims it. Nothing, with errno set, when that fails.
std::optional<Claim> createClaimedFolder(const QString& path);

/// Whether a living process claims what lies there.
bool isClaimed(const QString& path);

/// Deletes a regular file, or a folder with all that is in it, of this user's that no living process claims.
/// Anything else stays, and so does what cannot be deleted. Never waits for another process.
void removeUnclaimed(const QString& path);

}  // namespace parlivo
