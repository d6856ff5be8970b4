# shellcheck shell=bash
# What scenarios do and expect; each file of scenarios sources it. An expectation that does not hold
# ends the scenario with status 1 after showing the end of the trace and of the launcher's log.

# The scenario's folder, the folder of the packages made for all scenarios, and that of the sample.
: "${work:?}" "${packages:?}" "${kEquinox:?}"

kTrace=/tmp/install_trace.log
kRecord=/tmp/INSTALLATION_INTERNAL_PASTEBOARD
kMarker=/tmp/quillmere.hotfix.error
kPatience=60 # seconds that an awaited event may take

children=()

endChildren() {
  local child
  for child in "${children[@]}"; do kill -9 "$child" 2>/dev/null || true; done
}

broken() {
  {
    echo "FAILED: $*"
    for log in "$kTrace" "${rcp-}/rcplauncher.log"; do
      if [[ -f $log ]]; then printf -- '--- %s\n' "$log"; tail -n 25 "$log"; fi
    done
  } >&2
  exit 1
}

# ---- the instance and the packages ----

# instance [FOLDER [assemble's options]]: "app", "rcp" and "destination" are those of the last one.
instance() {
  destination=${1:-$work/apps}
  app=$("$kEquinox/assemble" "${@:2}" "$destination")
  rcp=$app/Contents/MacOS/rcp
}

# hotfix NAME [FOLDER]: a copy of a package, with its deploy folder and its site; prints its path.
hotfix() {
  local target=${2:-$work}/$1
  if [[ ! -d $target ]]; then
    mkdir -p "${target%/*}"
    cp -a "$packages/$1" "$target"
  fi
  find "$target" -name 'Hotfix-*.pkg' | grep . || broken "no package in $target"
}

# ---- runs of the installer ----

# install PACKAGE [ARGUMENT...]: "status" is the exit status, "runs" what the launcher's runs of it
# ended with, such as "0 2 0".
install() { installInto "$1" "$destination" "${@:2}"; }

installInto() {
  local before
  before=$(launcherResults | wc -w)
  status=0
  "$HOTFIX_PROGRAM" "$@" >"$work/output" 2>"$work/errors" || status=$?
  runs=$(launcherResults | cut -d ' ' -f "$((before + 1))-")
}

launcherResults() {
  local log=$rcp/rcplauncher.log
  if [[ -f $log ]]; then sed -n 's/^rcplauncher: rc=\([0-9]*\) after.*/\1/p' "$log" | paste -sd ' '; fi
}

# awaitLine TEXT FILE
awaitLine() {
  local end=$((SECONDS + kPatience))
  until grep -q -F -e "$1" "$2" 2>/dev/null; do
    if ((SECONDS > end)); then broken "nothing says \"$1\" in $2"; fi
    sleep 0.02
  done
}

# The one child of a process.
childOf() {
  local stat
  for stat in /proc/[0-9]*/stat; do
    { sed -n "s/^\([0-9]*\) (.*) [A-Za-z] $1 .*/\1/p" "$stat"; } 2>/dev/null || true
  done
}

startClient() {
  "$app/Contents/MacOS/Quillmere" -stay 120 >"$work/client" 2>&1 &
  client=$!
  children+=("$client")
  awaitLine 'client is up' "$work/client"
}

endClient() {
  kill "$client"
  wait "$client" 2>/dev/null || true
}

# ---- what the platform itself says ----

clientSays() { "$app/Contents/MacOS/Quillmere" 2>&1; }

installedRoots() {
  java -XX:TieredStopAtLevel=1 -jar "$rcp"/eclipse/plugins/org.eclipse.equinox.launcher_*.jar \
    -nosplash -configuration "$rcp/eclipse/configuration" -data "$work/roots" \
    -application org.eclipse.equinox.p2.director -listInstalledRoots
}

bundlesInfo() {
  cat "$rcp/eclipse/configuration/org.eclipse.equinox.simpleconfigurator/bundles.info"
}

# Content of every file of a folder, by path.
tree() { (cd "$1" && find . -type f -print0 | sort -z | xargs -0 sha256sum); }

# plist FILE KEY: the value; empty when there is none.
plist() {
  python3 - "$@" <<'END'
import plistlib, sys
try:
    with open(sys.argv[1], "rb") as file:
        print(plistlib.load(file).get(sys.argv[2], ""))
except FileNotFoundError:
    pass
END
}

recorded() { plist "$rcp/installInfo.plist" "$1"; }

launcherProperty() { sed -n "s/^$1=//p" "$rcp/rcplauncher.properties"; }

# ---- expectations ----

expectEqual() { # what wanted found
  [[ $3 == "$2" ]] || broken "$1 is \"$3\" instead of \"$2\""
}

expectStatus() { expectEqual 'the exit status' "$1" "$status"; }
# A pattern: where two installations follow one another, the second finds nothing new (2) unless a
# minute ended between them and gave it a new stamp (0).
expectRuns() {
  # shellcheck disable=SC2053
  [[ $runs == $1 ]] || broken "the result of the launcher's runs is \"$runs\" instead of \"$1\""
}
expectCode() { expectEqual 'the error code' "$1" "$(plist "$kRecord" ERROR_CODE)"; }
expectRecorded() { expectEqual "$1" "$2" "$(recorded "$1")"; }

expectExists() { [[ -e $1 ]] || broken "missing: $1"; }
expectMissing() { [[ ! -e $1 ]] || broken "still there: $1"; }

expectText() { # text file
  grep -q -F -e "$1" "$2" || broken "nothing says \"$1\" in $2"
}

expectNoText() {
  ! grep -q -F -e "$1" "$2" || broken "something says \"$1\" in $2"
}

expectTrace() { expectText "$1" "$kTrace"; }
expectNoTrace() { expectNoText "$1" "$kTrace"; }

# expectSuccess VERSION RUNS
expectSuccess() {
  expectStatus 0
  expectCode 0
  expectMissing "$kMarker"
  expectRuns "$2"
  expectRecorded hotfixVersion "$1"
}

# A run that a check has ended: expectRefusal CODE
expectRefusal() {
  expectStatus 1
  expectCode "$1"
  expectExists "$kMarker"
}

# The class that the hotfix brought runs in the client: expectPatch ID VERSION
expectPatch() {
  bundlesInfo | grep -q -F "$1,$2," || broken "bundles.info does not name $1 $2"
  expectEqual 'what the patches say' "patch $1 says: hotfix $2 is active" \
    "$(clientSays | grep patch)"
}

expectNoPatch() {
  ! bundlesInfo | grep -q -F com.quillmere. || broken "bundles.info names a hotfix"
  expectEqual 'what the patches say' 'no patch is installed' "$(clientSays | grep patch)"
}

# The profile's own list, without the platform: expectRoots [UNIT/VERSION...]
expectRoots() {
  expectEqual "the director's roots" "$*" \
    "$(installedRoots | grep '^com\.quillmere\.' | sort | paste -sd ' ')"
}

expectJar() { expectExists "$rcp/eclipse/plugins/$1.jar"; }
expectNoJar() { expectMissing "$rcp/eclipse/plugins/$1.jar"; }
