# shellcheck shell=bash
# What the scripts of this folder share. Source it; it runs nothing.

# shellcheck disable=SC2034 # for those who source this
kEquinox=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# "Cannot be done on this machine": tests take it for "skipped". Its reason is one line.
kSkipped=77

skip() {
  echo "$*" >&2
  exit "$kSkipped"
}

fail() {
  echo "${0##*/}: $*" >&2
  exit 1
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

# Text as the content of an XML attribute or element.
escapeXml() {
  local text=$1
  text=${text//&/'&amp;'}
  text=${text//</'&lt;'}
  text=${text//>/'&gt;'}
  printf '%s' "${text//\"/'&quot;'}"
}

# A property list of texts: propertyList KEY VALUE KEY VALUE...
propertyList() {
  echo '<?xml version="1.0" encoding="UTF-8"?>'
  echo '<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN"' \
    '"http://www.apple.com/DTDs/PropertyList-1.0.dtd">'
  echo '<plist version="1.0">'
  echo '<dict>'
  while (($# > 1)); do
    printf '  <key>%s</key>\n  <string>%s</string>\n' "$(escapeXml "$1")" "$(escapeXml "$2")"
    shift 2
  done
  echo '</dict>'
  echo '</plist>'
}
