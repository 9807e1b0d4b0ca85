# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# To be sourced beside progress.sh: fetches a pinned npm package for the sources that it carries.

check_sha512() { # SUM FILE
    if command -v sha512sum >/dev/null; then
        sha512sum --quiet --check - <<<"$1  $2" >&2
    else # macOS
        shasum -a 512 --status --check - <<<"$1  $2" >&2
    fi
}

# A package is known by its checksum: whatever else is served under the name is refused.
fetch_npm_package() { # PACKAGE SHA512 FOLDER WORK: unpacks the checked package into FOLDER, once, by way of WORK
    local package=$1 sha512=$2 folder=$3 work=$4 archive
    [[ ! -e $folder ]] || return 0
    command -v npm >/dev/null || die "npm is needed to fetch $package (Debian: apt-get install npm; macOS: brew install node)"
    say "  fetching $package"
    mkdir -p "$work/fetch"
    archive=$(cd "$work/fetch" && npm pack --silent "$package" 2>"$work/fetch.log") ||
        die "npm could not fetch $package: see $work/fetch.log"
    archive=$work/fetch/$(tail -n 1 <<<"$archive")
    check_sha512 "$sha512" "$archive" ||
        die "$package is not what it was: its sha512 differs from the pinned one ($archive)"
    mkdir -p "$folder.part"
    tar -xzf "$archive" -C "$folder.part" --strip-components=1
    mv "$folder.part" "$folder"
    rm "$archive"
}
