#!/usr/bin/env bash
# Installs every Debian package the project needs to build, test and run; does nothing when all are
# present. Run as root (or with sudo available).
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config git
    libgtest-dev libgmock-dev googletest libbenchmark-dev
    libicu-dev libcurl4-openssl-dev libuv1-dev libedit-dev libmicrohttpd-dev curl
    nlohmann-json3-dev
    # Text of the guides and the dialog pictures; MotoyaLCedar, the smallest font in Debian that
    # covers Japanese, draws what DejaVu Sans lacks.
    libcairo2-dev libpango1.0-dev fonts-dejavu-core fonts-motoya-l-cedar
    clang-format xdg-utils
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi
"${sudo_cmd[@]}" apt-get update
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
