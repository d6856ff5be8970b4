# shellcheck shell=bash
# shellcheck disable=SC2119 # an instance may be given a folder and options, and need not
# The way back from a hotfix, with the companion program.

# shellcheck source=../steps.sh
. "${BASH_SOURCE[0]%/*}/../steps.sh"

# control ARGUMENT...: as install does with the installer.
control() {
  local before program=${HOTFIX_PROGRAM%/*}/hotfixctl
  before=$(launcherResults | wc -w)
  status=0
  "$program" "$@" >"$work/output" 2>"$work/errors" || status=$?
  runs=$(launcherResults | cut -d ' ' -f "$((before + 1))-")
}

# proves: UNDO-1 UNDO-11
scenario_RemovalLeadsBackToTheOlderHotfix() {
  instance
  install "$(hotfix second)"
  install "$(hotfix first)"
  expectRefusal 7
  rm "$kMarker"

  control remove "$app"

  expectStatus 0
  expectText 'the hotfix was removed' "$work/output"
  expectRecorded hotfixVersion ''
  expectRoots
  expectNoPatch
  expectNoJar com.quillmere.hotfix_6.2.3.2
  control status "$app"
  expectStatus 1

  install "$(hotfix first)"

  expectStatus 0
  expectCode 0
  expectMissing "$kMarker"
  expectRecorded hotfixVersion 6.2.3.1
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.1
  expectPatch com.quillmere.hotfix 6.2.3.1
}

# proves: UNDO-3
scenario_RunningClientKeepsItsHotfix() {
  instance
  install "$(hotfix first)"
  startClient

  control remove "$app"

  expectStatus 5
  expectRuns ''
  endClient
  expectPatch com.quillmere.hotfix 6.2.3.1
  control remove "$app"
  expectStatus 0
  expectNoPatch
}

# The launcher finds no platform to start.
# proves: UNDO-6
scenario_FailedRemovalIsMadeAgain() {
  local plugins
  instance
  install "$(hotfix first)"
  plugins=$rcp/eclipse/plugins
  mv "$plugins" "$plugins.away"

  control remove "$app"

  expectStatus 7
  expectRecorded hotfixVersion ''
  mv "$plugins.away" "$plugins"
  control remove "$app"
  expectStatus 2
  control remove --force "$app"
  expectStatus 0
  expectRoots
  expectNoPatch
}

# proves: REHEARSE-1 REHEARSE-3
scenario_RehearsalLeavesTheInstanceAsItIs() {
  local before
  instance
  before=$(tree "$app")

  control rehearse "$(hotfix first)" --instance "$app"

  expectStatus 0
  expectText '  + com.quillmere.hotfix 6.2.3.1' "$work/output"
  expectEqual 'the instance' "$before" "$(tree "$app")"
  expectMissing "$kTrace"
  expectNoPatch
  install "$(hotfix first)"
  expectSuccess 6.2.3.1 '0 0'
}
