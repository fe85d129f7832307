#!/usr/bin/env bash
# Installs the Debian packages the build, tests, benchmarks and fuzzers need.
# Idempotent: when everything is present it only checks and exits quietly.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  libicu-dev zlib1g-dev libminizip-dev libcurl4-openssl-dev libssl-dev libxml2-dev
  googletest libgtest-dev python3 xsltproc
  libbenchmark-dev libexpat1-dev libpugixml-dev liburiparser-dev
  clang-14 libclang-rt-14-dev libfuzzer-14-dev clang-format
  locales
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi

if [ ${#missing[@]} -ne 0 ]; then
  echo "bootstrap: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# Tests check that number printing ignores a locale with a decimal comma.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  echo "bootstrap: generating the de_DE.UTF-8 locale"
  $sudo localedef -i de_DE -c -f UTF-8 de_DE.UTF-8
fi
