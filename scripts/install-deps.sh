#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only when one is
# missing (apt-get update first). Needs root for the install itself.
set -euo pipefail
packages=(cmake ninja-build g++ clang libclang-rt-14-dev googletest libgtest-dev libgmock-dev
          libbenchmark-dev python3-ezdxf ccache libboost-dev libedit-dev tmux
          libcgal-dev libgmp-dev libmpfr-dev
          pkg-config libcairo2-dev libfontconfig-dev fonts-dejavu-core poppler-utils)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo=sudo
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
