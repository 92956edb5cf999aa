#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing. Usage: install-tools.sh PACKAGE...
set -euo pipefail

missing=()
for package in "$@"; do
  dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=
[ "$(id -u)" -eq 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive
for package in "${missing[@]}"; do # of another processor: libc6:arm64
  case $package in *:*) $sudo dpkg --add-architecture "${package#*:}" ;; esac
done
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
