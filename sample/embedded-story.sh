# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # shared with story.sh
# The main job, step by step, on the sample instance whose launcher is our own program.
# Sourced by tell-story.

hotfix() { sample/make-hotfix --version "$1" "${@:3}" "$stage/$2"; }

# The parts tell of the packages and the instance that tellStory makes.

tellOfAPlan() {
  # Only root is told whether another user runs the application.
  step "What the first hotfix would do" \
    "The installer's own code, played on files that stay as they are."
  planInstaller $((EUID == 0 ? 0 : 2)) "$first" "$stage/Applications"
  runControl 1 status "$app"
}

tellOfUpgrades() {
  step "A hotfix is installed" \
    "Manifests, settings, key stores and extras arrive; the launcher adds the feature." \
    "All key stores of the instance go before the package's are copied, the product's own" \
    ".keystore.trust too: a package brings every key store that the client shall have, and one" \
    "that brings none leaves none."
  runInstaller 0 0 "$first" "$stage/Applications"
  expectAsPlanned 0
  expectHotfix 6.2.3.1
  expectMarker no
  askApplication
  expectApplicationSays "hotfix 6.2.3.1 is active"

  step "It is upgraded to a newer one" \
    "The old one is removed first, by the uninstall manifest that its package left."
  runInstaller 0 0 "$second" "$stage/Applications"
  expectInTrace "Found another hot fix, uninstall it before installing the new hot fix"
  expectHotfix 6.2.3.2
  askApplication
  expectApplicationSays "hotfix 6.2.3.2 is active"
  expectApplicationSilentAbout "hotfix 6.2.3.1"

  step "The same one is installed again" \
    "An equal version is never refused: it is removed and installed anew."
  runInstaller 0 0 "$second" "$stage/Applications"
  expectHotfix 6.2.3.2
  askApplication
  expectApplicationSays "hotfix 6.2.3.2 is active"
}

tellOfRefusals() {
  step "A lower one is refused" \
    "Code 7 and the marker file; the instance is cleaned up and keeps its hotfix."
  runInstaller 1 7 "$first" "$stage/Applications"
  expectHotfix 6.2.3.2
  expectMarker yes
  askApplication
  expectApplicationSays "hotfix 6.2.3.2 is active"

  step "A running application is not touched" "Code 6 and the marker file."
  startApplication
  runInstaller 1 6 "$third" "$stage/Applications"
  endApplication
  expectHotfix 6.2.3.2
  expectMarker yes
}

tellOfAFailure() {
  step "A hotfix is looked at before it is rolled out" \
    "Its site lacks the feature, which no check of the installer finds."
  runControl 1 lint "$broken"

  step "Provisioning fails" \
    "The site lacks the feature. The old hotfix is gone by then, the application still runs." \
    "No check failed, hence code 0 and no marker file: the status tells that it failed, and the" \
    "launcher's log why."
  runInstaller 1 0 "$broken" "$stage/Applications"
  expectHotfix none
  expectMarker no
  askApplication
  expectApplicationSays "feature com.quillmere.platform_6.2.3"
  expectApplicationSilentAbout "com.quillmere.hotfix"

  step "What that run did, and why it ended so" "From its trace."
  runControl 1 explain

  step "The repaired hotfix is installed" "Nothing of the failure is in the way."
  runInstaller 0 0 "$third" "$stage/Applications"
  expectHotfix 6.2.3.3
  askApplication
  expectApplicationSays "hotfix 6.2.3.3 is active"
}

tellOfARemoval() {
  step "The hotfix is taken back" "By the uninstall manifest that its package left; an older one could go in now."
  runControl 0 remove "$app"
  expectHotfix none
  askApplication
  expectApplicationSays "feature com.quillmere.platform_6.2.3"
  expectApplicationSilentAbout "com.quillmere.hotfix"
}

tellStory() {
  local first second broken third
  app=$(sample/make-instance --programs build/release/sample "$stage/Applications")
  rcpHome=$app/Contents/MacOS/rcp
  launcherLog=$rcpHome/launcher.log
  first=$(hotfix 6.2.3.1 hotfix-1)
  second=$(hotfix 6.2.3.2 hotfix-2 --layout flat)
  broken=$(hotfix 6.2.3.3 hotfix-3-broken --without-feature)
  third=$(hotfix 6.2.3.3 hotfix-3)

  tellOfAPlan
  tellOfUpgrades
  tellOfRefusals
  tellOfAFailure
  tellOfARemoval
}
