#!/usr/bin/env bash
# Installs the Debian packages the build needs when they are missing, and says so.
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v ninja >/dev/null || need+=(ninja-build)
command -v g++ >/dev/null || need+=(g++)
[ -f /usr/include/zlib.h ] || need+=(zlib1g-dev)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
command -v clang-format >/dev/null || ls /usr/bin/clang-format-* >/dev/null 2>&1 || need+=(clang-format)
if [ "${QUILB_NEED_CLANG:-0}" = 1 ]; then
  command -v clang++ >/dev/null || need+=(clang)
  ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 || need+=(libclang-rt-dev)
fi
if [ ${#need[@]} -gt 0 ]; then
  echo "Installing missing packages: ${need[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}"
fi
