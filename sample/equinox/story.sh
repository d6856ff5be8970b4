# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with sample/story.sh
# The main job on a real platform: an instance made of Debian's Equinox and p2, hotfixes with real
# p2 sites. What became of a run is asked from the platform: the director's list of roots, the
# framework's bundles.info, and the class that a hotfix adds to the client.
# Sourced by tell-story.

equinox=sample/equinox

realHotfix() { # NAME [OPTION...] VERSION
  "$equinox/make-hotfix" "${@:2:$#-2}" "$stage/$1" "${*: -1}"
}

# The director's words, up to where the framework logs them once more with its stack; what was said
# last where the director did not get so far.
reasonIn() {
  local log reason
  log=$(cat)
  reason=$(sed -n '/^Installation failed/,/^!/{/^!/d;/^[[:space:]]*\(at .*\)\{0,1\}$/d;p}' <<<"$log")
  printf '%s\n' "${reason:-$(tail -n 3 <<<"$log")}"
}

platformLog() { cat "$launcherLog" 2>/dev/null || true; }

# The sum of what the launcher's runs and the log collection noted since a line of their log.
platformTime() {
  platformLog | tail -n "+$(($1 + 1))" |
    awk '/^(rcplauncher: rc=|collection: done).* after [0-9]+ ms$/ { sum += $(NF - 1); ++runs }
         END { print sum + 0, runs + 0 }'
}

directorsRoots() {
  java -XX:TieredStopAtLevel=1 -jar "$rcpHome"/eclipse/plugins/org.eclipse.equinox.launcher_*.jar \
    -nosplash -configuration "$rcpHome/eclipse/configuration" -data "$stage/notes/director" \
    -application org.eclipse.equinox.p2.director -listInstalledRoots |
    grep '/' >"$stage/notes/roots"
}

askPlatform() {
  local bundles=$rcpHome/eclipse/configuration/org.eclipse.equinox.simpleconfigurator/bundles.info
  directorsRoots || storyFails 'the director does not list its roots'
  rows director <"$stage/notes/roots"
  row framework "$(grep -c -v '^#' "$bundles") bundles in bundles.info"
  grep '^com\.quillmere\.' "$bundles" | rows '' || true
  "$app/Contents/MacOS/Quillmere" >"$stage/notes/application" || storyFails 'the client fails'
  grep patch "$stage/notes/application" | rows client
}

showTime() { # lines of the platform's log before the run
  local wall own platform runs
  read -r wall own <"$stage/notes/time"
  read -r platform runs < <(platformTime "$1")
  row time "$wall ms: the platform $platform ms in $runs processes, the installer itself and their \
starts $((wall - platform)) ms ($own ms of its own processor time)"
}

# runOnPlatform STATUS CODE ARGUMENT...
runOnPlatform() {
  local wantedStatus=$1 wantedCode=$2 status=0 code before
  shift 2
  rm -f "$markerFile"
  before=$(linesOf "$launcherLog")
  row command "$(printf '%q ' "${installer#"$PWD"/}" "${@/#"$PWD"\//}")"
  "$equinox/stopwatch" "$stage/notes/time" "$installer" "$@" >"$stage/notes/output" || status=$?

  rows printed <"$stage/notes/output"
  row status "$status"
  code=$(plistValues "$recordFile" ERROR_CODE)
  showRecord "${code:-unknown}"
  showReason "$status" "${code:-unknown}" "$before"
  platformLog | tail -n "+$((before + 1))" |
    sed -n 's/^rcplauncher: rc=\([0-9]*\) after.*/\1/p' | paste -sd ' ' |
    sed 's/^/results of its runs: /' | rows launcher
  traceProblems | rows trace
  showTime "$before"

  ((status == wantedStatus)) || storyFails "exit status $status instead of $wantedStatus"
  [[ $code == "$wantedCode" ]] || storyFails "error code $code instead of $wantedCode"
}

expectPatch() {
  grep -q -x -F "patch com.quillmere.hotfix says: hotfix $1 is active" \
    "$stage/notes/application" || storyFails "the class of hotfix $1 does not run"
  grep -q -x -F "com.quillmere.hotfix.feature.group/$1" "$stage/notes/roots" ||
    storyFails "the director does not know hotfix $1"
}

expectNoPatch() {
  grep -q -x -F 'no patch is installed' "$stage/notes/application" ||
    storyFails 'the client still runs a patch'
  ! grep -q quillmere.hotfix "$stage/notes/roots" || storyFails 'the director still knows a hotfix'
}

startClient() {
  local line
  coproc client { exec "$app/Contents/MacOS/Quillmere" -stay 120; }
  # shellcheck disable=SC2154 # set by coproc
  clientProcess=$client_PID
  children+=("$clientProcess")
  while IFS= read -r line <&"${client[0]}"; do
    [[ $line != 'client is up' ]] || break
  done
  row started "${app#"$PWD"/}/Contents/MacOS/Quillmere, process $clientProcess"
}

endClient() {
  kill "$clientProcess"
  wait "$clientProcess" 2>/dev/null || true
  children=()
}

# The parts tell of the packages and the platform that tellStory makes.

tellOfUpgrades() {
  step "The platform before anything is installed"
  askPlatform
  expectNoPatch

  step "A hotfix is installed" "The director adds its feature, and the client runs its class."
  runOnPlatform 0 0 "$first" "$stage/Applications"
  askPlatform
  expectPatch 6.2.3.1

  step "It is upgraded to a newer one" \
    "The old feature is taken out first; the launcher is started twice for that."
  runOnPlatform 0 0 "$second" "$stage/Applications"
  askPlatform
  expectPatch 6.2.3.2

  step "The same one is installed again" "It is taken out and added anew."
  runOnPlatform 0 0 "$second" "$stage/Applications"
  askPlatform
  expectPatch 6.2.3.2
}

tellOfRefusalAndFailure() {
  step "A running client is not touched" "Code 6 and the marker file."
  startClient
  runOnPlatform 1 6 "$first" "$stage/Applications"
  endClient
  expectMarker yes
  askPlatform
  expectPatch 6.2.3.2

  step "A site lacks its artifacts" \
    "The director fails with 13. The old hotfix is gone by then, the instance still runs."
  runOnPlatform 1 0 "$hollow" "$stage/Applications"
  expectMarker no
  askPlatform
  expectNoPatch
}

tellOfRemoval() {
  step "A hotfix is on the instance again"
  runOnPlatform 0 0 "$second" "$stage/Applications"
  askPlatform
  expectPatch 6.2.3.2

  step "It is uninstalled by an upgrade" \
    "The newer package brings no feature: what remains is the removal of the old one."
  runOnPlatform 0 0 "$last" "$stage/Applications"
  askPlatform
  expectNoPatch
}

tellStory() {
  local first second hollow last
  export PATH
  echo "Assembling a platform from Debian's packages ..."
  PATH=$(. "$equinox/common.sh" && "$equinox/packages" >/dev/null && findJavaHome)/bin:$PATH
  app=$("$equinox/assemble" "$stage/Applications")
  rcpHome=$app/Contents/MacOS/rcp
  launcherLog=$rcpHome/rcplauncher.log
  first=$(realHotfix hotfix-1 6.2.3.1)
  second=$(realHotfix hotfix-2 --layout flat 6.2.3.2)
  hollow=$(realHotfix hotfix-3 --without-artifacts 6.2.3.3)
  last=$(realHotfix hotfix-4 --withdraw 6.2.3.4)

  tellOfUpgrades
  tellOfRefusalAndFailure
  tellOfRemoval
}
