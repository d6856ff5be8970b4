# shellcheck shell=bash
# shellcheck disable=SC2154 # set by the caller and its story
# Tells a run of the installer to a person: the command, what it answered, what it left behind and
# what it changed. Every run has an expected outcome; a different one ends the story with status 1.
# Sourced, never started. The caller sets "installer" and "control", the paths of the built program
# and of hotfixctl; its story sets "app", the instance's application bundle, "rcpHome", and "launcherLog", the log of its launcher.

traceFile=/tmp/install_trace.log
recordFile=/tmp/INSTALLATION_INTERNAL_PASTEBOARD
markerFile=/tmp/quillmere.hotfix.error
programFiles=("$traceFile" "$recordFile" "$markerFile"
  /tmp/com.kiv.rcp.platform.internal.configuration)

if [[ -t 1 ]]; then bold=$'\e[1m' plain=$'\e[0m'; else bold='' plain=''; fi
stepNumber=0
children=()

storyFails() {
  printf '\n%sNOT AS EXPECTED: %s%s\n' "$bold" "$1" "$plain" >&2
  exit 1
}

# openStage FOLDER: an empty folder for the instance, the packages and the notes of the runs.
openStage() {
  stage=$1
  rm -rf "$stage"
  mkdir -p "$stage/notes"
  trap closeStage EXIT
}

closeStage() {
  local child
  for child in "${children[@]}"; do
    if kill "$child" 2>/dev/null; then wait "$child" 2>/dev/null || true; fi
  done
}

# The program's files in /tmp that another user has left and this one cannot replace.
foreignTraces() {
  local file foreign=()
  ((EUID != 0)) || return 0
  for file in "${programFiles[@]}"; do
    if [[ -e $file && ! -O $file ]]; then foreign+=("$file"); fi
  done
  printf '%s' "${foreign[*]}"
}

# step TITLE [LINE...]: what comes now, and what to look for.
step() {
  stepNumber=$((stepNumber + 1))
  printf '\n%s== %s. %s%s\n' "$bold" "$stepNumber" "$1" "$plain"
  shift
  (($# == 0)) || printf '   %s\n' "$@"
}

row() { printf '  %-10s %s\n' "$1" "$2"; }

# rows NAME: the lines of standard input, the name before the first.
rows() {
  local name=$1 line
  while IFS= read -r line; do
    row "$name" "$line"
    name=''
  done
}

# plistValues FILE KEY: the texts under a key of one of our XML property lists, one a line.
plistValues() {
  [[ -r $1 ]] || return 0
  tr -d '\n\t' <"$1" | sed -e 's/</\n</g' | awk -v key="$2" '
    /^<key>/ { inside = substr($0, 6) == key; next }
    inside && /^<(string|integer)>/ { sub(/^<[a-z]*>/, ""); print }
    inside && /^<(true|false)\/>/ { gsub(/[<\/>]/, ""); print }' |
    sed -e 's/&lt;/</g' -e 's/&gt;/>/g' -e 's/&quot;/"/g' -e "s/&apos;/'/g" -e 's/&amp;/\&/g'
}

# snapshot FOLDER: kind, mode, owner and content of everything below it, one tab-separated line each.
snapshot() {
  (
    cd "$1" || exit
    find . -type f -print0 | LC_ALL=C sort -z | xargs -0 -r sha256sum -z |
      tr '\0' '\n' | sed -e 's/^\([0-9a-f]*\)  \(.*\)$/\2\t\1/'
    find . -mindepth 1 ! -type f -printf '%p\t%y%l\n'
  ) | LC_ALL=C sort
}

attributes() { find "$1" -printf '%P\t%m %u:%g\n' | LC_ALL=C sort; }

# showChanges BEFORE AFTER: "+" added, "-" removed, "~" changed; a folder stands for what is in it.
showChanges() {
  awk -F '\t' '
    function parentOf(path) { sub(/\/[^\/]*$/, "", path); return path }
    FNR == NR { before[$1] = $2; next }
    { after[$1] = $2 }
    END {
      for (path in after) {
        if (!(path in before)) {
          if ((parentOf(path) in before) || parentOf(path) == ".") print path "\t+"
        } else if (before[path] != after[path]) print path "\t~"
      }
      for (path in before) {
        if (!(path in after) && ((parentOf(path) in after) || parentOf(path) == ".")) print path "\t-"
      }
    }' "$1" "$2" | LC_ALL=C sort | awk -F '\t' '{ sub(/^\.\//, "", $1); print $2 " " $1 }'
}

# What the trace says beyond its informational lines, each text once, with how often it came.
traceProblems() {
  [[ -r $traceFile ]] || return 0
  sed -n -e 's/^.*HotfixInstaller\[[0-9]*\] \(<\(Warning\|Error\)>: .*\)$/\1/p' "$traceFile" |
    awk '!($0 in count) { order[++n] = $0 } { ++count[$0] }
         END { for (i = 1; i <= n; ++i) print order[i] (count[order[i]] > 1 ? "  (" count[order[i]] " times)" : "") }'
}

showRecord() {
  local details
  details=$(plistValues "$recordFile" ERROR_DETAILS | sed -e 's/.*/"&"/' | paste -s -d , -)
  row record "ERROR_CODE $1, ERROR_DETAILS [$details]"
  if [[ -e $markerFile ]]; then row marker "$markerFile exists"; else row marker none; fi
}

linesOf() { if [[ -r $1 ]]; then wc -l <"$1"; else echo 0; fi; }

# What of its launcher's log says why a run has failed; a story may know better.
reasonIn() { tail -n 3; }

# showReason STATUS CODE LINES: of a run that failed without a code, the reason in what the launcher
# has logged behind that many lines. The installer never reads it: it is told nowhere else.
showReason() {
  if (($1 == 0)) || [[ $2 != 0 ]]; then return; fi
  if (($(linesOf "$launcherLog") == $3)); then
    row launcher 'left no line in its log'
  else
    tail -n "+$(($3 + 1))" "$launcherLog" | reasonIn | rows launcher
  fi
}

showVersions() {
  local info=$rcpHome/installInfo.plist key value line=''
  for key in version hotfixVersion SKIPRUNNINGCHECK installedHotfixBundleID; do
    value=$(plistValues "$info" "$key")
    line+="${line:+, }$key ${value:-none}"
  done
  row recorded "$line"
}

# runInstaller STATUS CODE ARGUMENT...: one run on the instance "app" and what became of it.
runInstaller() {
  local wantedStatus=$1 wantedCode=$2 status=0 code changed logged
  shift 2
  logged=$(linesOf "$launcherLog")
  rm -f "$markerFile"
  snapshot "$app" >"$stage/notes/before"
  attributes "$app" >"$stage/notes/attributes-before"
  row command "$(printf '%q ' "${installer#"$PWD"/}" "${@/#"$PWD"\//}")"
  "$installer" "$@" >"$stage/notes/output" || status=$?
  snapshot "$app" >"$stage/notes/after"
  attributes "$app" >"$stage/notes/attributes-after"

  rows printed <"$stage/notes/output"
  row status "$status"
  code=$(plistValues "$recordFile" ERROR_CODE)
  showRecord "${code:-unknown}"
  showReason "$status" "${code:-unknown}" "$logged"
  showVersions
  showChanges "$stage/notes/before" "$stage/notes/after" | rows changed
  changed=$(awk -F '\t' 'FNR == NR { before[$1] = $2; next }
    ($1 in before) && before[$1] != $2' "$stage/notes/attributes-before" \
    "$stage/notes/attributes-after" | wc -l)
  ((changed == 0)) || row '' "and new owner, group or mode for $changed items that stayed"
  traceProblems | rows trace

  ((status == wantedStatus)) || storyFails "exit status $status instead of $wantedStatus"
  [[ $code == "$wantedCode" ]] || storyFails "error code $code instead of $wantedCode"
}

# runControl STATUS ARGUMENT...: one run of hotfixctl, its answer with paths as seen from here.
runControl() {
  local wantedStatus=$1 status=0
  shift
  row command "$(printf '%q ' "${control#"$PWD"/}" "${@/#"$PWD"\//}")"
  "$control" "$@" >"$stage/notes/answer" || status=$?
  sed -e "s|$PWD/||g" "$stage/notes/answer" | rows told
  row status "$status"
  ((status == wantedStatus)) || storyFails "exit status $status instead of $wantedStatus"
}

# planInstaller STATUS ARGUMENT...: what the installer would do, noted for expectAsPlanned.
planInstaller() {
  runControl "$1" plan "${@:2}"
  "$control" plan --json "${@:2}" >"$stage/notes/plan" || (($? == $1))
}

# The checks behind a run; each says what it found.

# expectAsPlanned STATUS: the run behind planInstaller did what that had told, and ended so.
expectAsPlanned() {
  sample/compare-plan "$stage/notes/plan" "$stage/notes/before" "$stage/notes/after" "$app" "$1" \
    >"$stage/notes/compared" || storyFails "not as planned: $(cat "$stage/notes/compared")"
  rows planned <"$stage/notes/compared"
}

expectHotfix() {
  local recorded
  recorded=$(plistValues "$rcpHome/installInfo.plist" hotfixVersion)
  [[ ${recorded:-none} == "$1" ]] || storyFails "hotfix ${recorded:-none} is recorded instead of $1"
}

expectMarker() {
  [[ $(test -e "$markerFile" && echo yes || echo no) == "$1" ]] ||
    storyFails "the marker file $markerFile should be there: $1"
}

expectInTrace() {
  grep -q -F -e "$1" "$traceFile" || storyFails "the trace does not say \"$1\""
}

# What the application itself says about its features.
askApplication() {
  "$app/Contents/MacOS/Quillmere" >"$stage/notes/application" || storyFails "the application fails"
  grep -v '^up, ' "$stage/notes/application" | rows runs
}

expectApplicationSays() {
  grep -q -F -e "$1" "$stage/notes/application" || storyFails "the application does not say \"$1\""
}

expectApplicationSilentAbout() {
  ! grep -q -F -e "$1" "$stage/notes/application" || storyFails "the application still says \"$1\""
}

# Starts the application and goes on once it is up.
startApplication() {
  local line
  coproc application { exec "$app/Contents/MacOS/Quillmere" --stay 60; }
  # shellcheck disable=SC2154 # set by coproc
  applicationProcess=$application_PID
  children+=("$applicationProcess")
  while IFS= read -r line <&"${application[0]}"; do
    [[ $line != up,* ]] || break
  done
  row started "${app#"$PWD"/}/Contents/MacOS/Quillmere, process $applicationProcess"
}

endApplication() {
  kill "$applicationProcess"
  wait "$applicationProcess" 2>/dev/null || true
  children=()
}

# What stays behind.
closingWords() {
  local file
  printf '\n%sAll %s steps went as expected.%s\n' "$bold" "$stepNumber" "$plain"
  printf 'The instance and the packages are in %s.\n' "${stage#"$PWD"/}"
  if [[ /tmp -ef $stage/../demo-tmp ]]; then
    printf 'The files of the program itself are in build/demo-tmp:\n'
  else
    printf 'Outside the build tree there are only the files of the program itself:\n'
  fi
  for file in "${programFiles[@]}"; do
    if [[ -e $file ]]; then printf '  %s\n' "$file"; fi
  done
}
