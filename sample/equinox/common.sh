# shellcheck shell=bash
# What the scripts of this folder share. Source it; it runs nothing.

kEquinox=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=../lib.sh
. "$kEquinox/../lib.sh"

# "Cannot be done on this machine": tests take it for "skipped". Its reason is one line.
kSkipped=77

skip() {
  echo "$*" >&2
  exit "$kSkipped"
}

# The folder outside the repository for everything downloaded or built once. HOME may be unset.
cacheFolder() {
  local home=${HOME-}
  if [[ -z $home ]]; then home=$(getent passwd "$(id -u)" | cut -d: -f6); fi
  echo "${HOTFIX_EQUINOX_CACHE:-${XDG_CACHE_HOME:-$home/.cache}/hotfix-equinox}"
}

# A short name for the content of the given files.
fingerprint() { cat -- "$@" | sha256sum | cut -c1-12; }

# The Java home whose compiler works: JAVA_HOME, the javac on PATH, Debian's own folder.
findJavaHome() {
  local candidate
  for candidate in "${JAVA_HOME-}" "$(readlink -f "$(command -v javac)" 2>/dev/null |
    sed 's|/bin/javac$||')" /usr/lib/jvm/java-17-openjdk-*; do
    if [[ -n $candidate && -x $candidate/bin/javac && -x $candidate/bin/keytool ]]; then
      echo "$candidate"
      return 0
    fi
  done
  return 1
}
