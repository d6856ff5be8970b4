# shellcheck shell=bash
# What goes wrong, and that the instance survives it.

# shellcheck source=../steps.sh
. "${BASH_SOURCE[0]%/*}/../steps.sh"

scenario_MissingArtifactsFailAndTheInstanceStillRuns() {
  instance
  install "$(hotfix hollow)"

  expectStatus 1
  expectCode 0
  expectMissing "$kMarker"
  expectRuns '0 13'
  expectRecorded hotfixVersion ''
  expectText rc=13 "$rcp/../.provisioning_rc"
  expectRoots
  expectNoPatch
}

scenario_SiteWithoutTheFeatureFailsAndTheInstanceStillRuns() {
  instance
  install "$(hotfix lacking)"

  expectStatus 1
  expectCode 0
  expectMissing "$kMarker"
  expectRuns '0 13'
  expectText 'com.quillmere.hotfix.feature.group' "$rcp/rcplauncher.log"
  expectNoText 'An error occurred copying file' "$rcp/rcplauncher.log"
  expectRoots
  expectNoPatch
}

scenario_UnmetRequirementFailsAndTheOldHotfixIsGone() {
  instance
  install "$(hotfix first)"
  install "$(hotfix demanding)"

  expectStatus 1
  expectCode 0
  expectRuns '0 2 2 13'
  expectRecorded hotfixVersion ''
  expectText 'requires' "$rcp/rcplauncher.log"
  expectRoots
  expectNoPatch
}

scenario_HotfixWithoutItsSiteFailsAndTheRepairedOneIsInstalled() {
  local package
  instance
  package=$(hotfix first)
  mv "$work/first/updates" "$work/updates"
  install "$package"
  expectStatus 1
  expectRuns '0 13'
  expectNoPatch

  mv "$work/updates" "$work/first/updates"
  install "$package"

  expectSuccess 6.2.3.1 '0 [02]'
  expectPatch com.quillmere.hotfix 6.2.3.1
}

# proves: RESULT-5
scenario_StaleSuccessDoesNotHideAFailure() {
  instance
  echo rc=0 >"$rcp/../.provisioning_rc"
  install "$(hotfix hollow)"

  expectStatus 1
  expectRuns '0 13'
}

scenario_StaleResultOfADeadLauncherIsNotRead() {
  instance
  printf '#!/bin/bash\nexit 0\n' >"$rcp/rcplauncher"
  echo rc=0 >"$rcp/../.provisioning_rc"
  install "$(hotfix first)"

  expectStatus 1
  expectRecorded hotfixVersion ''
  expectMissing "$rcp/../.provisioning_rc"
}

scenario_StaleFailureDoesNotHideASuccess() {
  instance
  echo rc=13 >"$rcp/../.provisioning_rc"
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectText rc=0 "$rcp/../.provisioning_rc"
}

# The plug-in's jar is a pipe that nobody writes to: the director stops in the middle of its work.
# proves: LAUNCH-6
scenario_KilledLauncherFailsAndTheNextRunInstalls() {
  local installer launcher machine jar package
  instance
  package=$(hotfix first)
  jar=$work/first/updates/platform/plugins/com.quillmere.hotfix_6.2.3.1.jar
  mv "$jar" "$work/plugin.jar"
  mkfifo "$jar"
  "$HOTFIX_PROGRAM" "$package" "$destination" >"$work/output" &
  installer=$!
  awaitLine 'Installing com.quillmere.hotfix.feature.group' "$rcp/rcplauncher.log"
  launcher=$(childOf "$installer")
  machine=$(childOf "$launcher")
  kill -9 "$launcher" "$machine"
  status=0
  wait "$installer" || status=$?

  expectStatus 1
  expectCode 0
  expectRecorded hotfixVersion ''
  expectMissing "$rcp/../.provisioning_rc"
  expectNoPatch

  rm "$jar"
  mv "$work/plugin.jar" "$jar"
  install "$package"

  expectStatus 0
  expectRecorded hotfixVersion 6.2.3.1
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.1
  expectPatch com.quillmere.hotfix 6.2.3.1
}

scenario_LauncherThatCannotBeStartedIsNamedInTheTrace() {
  instance
  chmod -x "$rcp/rcplauncher"
  install "$(hotfix first)"

  expectStatus 1
  expectCode 0
  expectRuns ''
  expectTrace "$rcp/rcplauncher"
  expectNoPatch
}

# proves: INSTALL-8
scenario_MalformedManifestIsReportedAndChangesNoFeature() {
  local package
  instance
  package=$(hotfix first)
  echo '<manifest><domain-object>' >"$work/first/mac/deploy/install.hotfix.xml"
  install "$package"

  expectStatus 1
  expectCode 4
  expectMissing "$kMarker"
  expectRuns '0'
  expectRecorded hotfixVersion ''
  expectNoPatch
}

scenario_CharacterThatTheEngineCannotHandleIsRefused() {
  instance "$work/apps#1"
  install "$(hotfix first)"

  expectRefusal 3
  expectRecorded hotfixVersion ''
  expectEqual 'the profile' '' "$(bundlesInfo | grep quillmere || true)"
}

# proves: CHECK-5
scenario_RunningClientIsRefusedUntilItEnds() {
  instance
  startClient
  install "$(hotfix first)"
  expectRefusal 6
  expectRuns '0 0'
  expectTrace 'The target platform Quillmere is running.'
  endClient
  expectNoPatch

  rm "$kMarker"
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '2 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
}

scenario_SkippedRunningCheckInstallsBesideTheRunningClient() {
  instance
  startClient
  install "$(hotfix bold)"

  expectSuccess 6.2.3.1 '0 0'
  expectNoTrace 'Check whether platform is running.'
  expectRecorded SKIPRUNNINGCHECK true
  kill -0 "$client" || broken 'the client has ended'
  expectPatch com.quillmere.hotfix 6.2.3.1
  endClient
}

# The launcher knows the installer's argument lists and no others.
scenario_LauncherRefusesOtherArgumentLists() {
  local update='-rcpLauncherWait -provManifest -noSplash -provisioningOperation update -nl en_US'
  local machine='-vmargs -Dfile.encoding=UTF-8 -Xms32m -Xmx256m'
  local site='-DprovisioningOperation=update -DprovUpdateSiteListOverride=file:/x'
  local refused arguments
  instance
  for arguments in '' "$update" "$update -data $work $machine" "$update $machine -data" \
    "$update $machine $site" "${update/update/remove} $machine" "$update $machine -more words" \
    "${update/update/cleanup} ${machine/UTF-8/UTF-8 $site} -data $work" "$machine $update"; do
    refused=0
    # shellcheck disable=SC2086 # words
    "$rcp/rcplauncher" $arguments || refused=$?
    expectEqual "what it answers to \"$arguments\"" 1 "$refused"
    expectText rc=1 "$rcp/../.provisioning_rc"
  done
  expectEqual 'refusals in its log' 9 \
    "$(grep -c 'cannot do anything with these arguments' "$rcp/rcplauncher.log")"
}
