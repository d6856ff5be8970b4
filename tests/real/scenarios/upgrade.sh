# shellcheck shell=bash
# shellcheck disable=SC2119 # an instance may be given a folder and options, and need not
# A hotfix on an instance that has one.

# shellcheck source=../steps.sh
. "${BASH_SOURCE[0]%/*}/../steps.sh"

# proves: SUCCESS-1
scenario_UpgradeTakesTheOldFeatureOutFirst() {
  instance
  install "$(hotfix first)"
  install "$(hotfix second)"

  expectSuccess 6.2.3.2 '0 2 2 0'
  expectTrace 'Found another hot fix, uninstall it before installing the new hot fix'
  expectText 'The provisioning operations have completed successfully.' "$work/output"
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.2
  expectPatch com.quillmere.hotfix 6.2.3.2
  expectNoJar com.quillmere.hotfix_6.2.3.1
  expectMissing "$rcp/eclipse/features/com.quillmere.hotfix_6.2.3.1"
}

scenario_SameHotfixAgainIsRemovedAndInstalledAnew() {
  instance
  install "$(hotfix first)"
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 2 2 0'
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.1
  expectPatch com.quillmere.hotfix 6.2.3.1
}

# Removal and installation of one run carry the same stamp unless a minute ends between them; then
# the next run shows it.
scenario_EqualStampsOfOneMinuteDoNotHideTheNewHotfix() {
  local name
  instance
  install "$(hotfix first)"
  for name in second third; do
    install "$(hotfix "$name")"
    expectStatus 0
    expectRuns '0 2 2 0'
    if [[ -e $rcp/deploy/install.$(launcherProperty provisioning.manifest.version).xml ]]; then
      expectPatch com.quillmere.hotfix "$(recorded hotfixVersion)"
      return
    fi
  done
  broken 'no two stamps were equal'
}

# proves: VERSION-2
scenario_LowerVersionIsRefusedAndTheInstalledOneKeepsRunning() {
  instance
  install "$(hotfix second)"
  install "$(hotfix first)"

  expectRefusal 7
  expectRuns '0 0'
  expectText '-provisioningOperation cleanup' "$rcp/rcplauncher.log"
  expectRecorded hotfixVersion 6.2.3.2
  expectPatch com.quillmere.hotfix 6.2.3.2
}

scenario_RefusedRunRepairsAProfileThatLostItsHotfix() {
  instance
  install "$(hotfix second)"
  java -jar "$rcp"/eclipse/plugins/org.eclipse.equinox.launcher_*.jar -nosplash \
    -configuration "$rcp/eclipse/configuration" -data "$work/loss" \
    -application org.eclipse.equinox.p2.director \
    -uninstallIU com.quillmere.hotfix.feature.group >/dev/null
  expectRoots

  install "$(hotfix first)"

  expectRefusal 7
  expectRuns '0 0'
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.2
  expectPatch com.quillmere.hotfix 6.2.3.2
}

scenario_HotfixOfAnotherFeatureReplacesTheOldOne() {
  instance
  install "$(hotfix first)"
  install "$(hotfix other)"

  expectSuccess 6.2.3.4 '0 2 2 0'
  expectRoots com.quillmere.other.feature.group/6.2.3.4
  expectPatch com.quillmere.other 6.2.3.4
  expectNoJar com.quillmere.hotfix_6.2.3.1
}

# A package that brings nothing needs no site.
scenario_WithdrawnHotfixLeavesNothingOnThePlatform() {
  local package
  instance
  install "$(hotfix first)"
  expectJar com.quillmere.hotfix_6.2.3.1

  package=$(hotfix withdrawn)
  rm -r "$work/withdrawn/updates"
  install "$package"

  expectSuccess 6.2.3.5 '0 2 2 0'
  expectRoots
  expectNoPatch
  expectNoJar com.quillmere.hotfix_6.2.3.1
  expectNoText com.quillmere.hotfix "$rcp/deploy/install.xml"
}

scenario_InstanceThatWasMovedIsUpgraded() {
  instance
  install "$(hotfix first)"
  mkdir "$work/elsewhere"
  mv "$app" "$work/elsewhere"
  destination=$work/elsewhere
  app=$destination/Quillmere.app
  rcp=$app/Contents/MacOS/rcp

  install "$(hotfix second)"

  expectSuccess 6.2.3.2 '0 2 2 0'
  expectPatch com.quillmere.hotfix 6.2.3.2
}

# proves: REMOVE-9
scenario_LostUninstallManifestDoesNotStopTheUpgrade() {
  instance
  install "$(hotfix first)"
  rm "$rcp/deploy/uninstall.hotfix.xml"
  install "$(hotfix second)"

  expectSuccess 6.2.3.2 '2 0'
  expectText "File $rcp/deploy/uninstall.hotfix.xml was not found." "$work/output"
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.2
  expectPatch com.quillmere.hotfix 6.2.3.2
}
