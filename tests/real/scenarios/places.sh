# shellcheck shell=bash
# Which instance is meant, and what is collected from it.

# shellcheck source=../steps.sh
. "${BASH_SOURCE[0]%/*}/../steps.sh"

# register PRODUCT PATH: what the platform's own installer notes for a product.
register() {
  local folder="/Library/Application Support/Velna/$1"
  mkdir -p "$folder"
  cat >"$folder/framework.plist" <<END
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>pathToProduct</key><string>$2</string></dict></plist>
END
}

scenario_OnlyTheNamedOneOfTwoInstancesIsChanged() {
  local left
  instance "$work/left"
  left=$app
  tree "$left" >"$work/before"
  instance "$work/right"
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  tree "$left" >"$work/after"
  diff "$work/before" "$work/after" || broken 'the other instance has changed'
  expectPatch com.quillmere.hotfix 6.2.3.1
  app=$left rcp=$left/Contents/MacOS/rcp
  expectNoPatch
}

scenario_TwoInstancesHaveHotfixesOfTheirOwn() {
  instance "$work/left"
  install "$(hotfix first)"
  instance "$work/right"
  install "$(hotfix second)"
  expectPatch com.quillmere.hotfix 6.2.3.2

  destination=$work/left app=$work/left/Quillmere.app rcp=$work/left/Quillmere.app/Contents/MacOS/rcp
  install "$(hotfix other)"

  expectSuccess 6.2.3.4 '0 2 2 0'
  expectPatch com.quillmere.other 6.2.3.4
}

# Registrations count for packages that allow one instance only.
# proves: BUNDLE-6
scenario_RegistrationIsNotAskedWhenManyInstancesAreAllowed() {
  instance "$work/installed"
  register Quillmere "$app"
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
}

# proves: BUNDLE-3
scenario_RegisteredInstanceIsFoundInAnotherFolder() {
  instance "$work/installed"
  register Quillmere "$app"
  mkdir "$work/apps"
  destination=$work/apps
  install "$(hotfix registered)"

  expectSuccess 6.2.3.1 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
  expectEqual 'what the destination holds' '' "$(ls "$work/apps")"
}

# The checks and the first run take the registered bundle, the installation the bundle of the
# package's name beside it: there is none, so it stops.
scenario_InstanceRegisteredUnderAnotherNameIsProvisionedButGetsNoHotfix() {
  instance "$work/installed" --name Renamed
  register Quillmere "$app"
  destination=$work/apps
  mkdir "$destination"
  install "$(hotfix registered)"

  expectStatus 1
  expectCode 4
  expectMissing "$kMarker"
  expectRuns '0'
  expectRecorded hotfixVersion ''
  expectMissing "$work/installed/Quillmere.app"
  expectNoPatch
}

scenario_InstanceOfThePackagesNameBesideTheRegisteredOneGetsTheHotfix() {
  local renamed
  instance "$work/installed" --name Renamed
  register Quillmere "$app"
  renamed=$rcp
  instance "$work/installed"
  destination=$work/apps
  mkdir "$destination"
  install "$(hotfix registered)"

  expectStatus 0
  expectRuns '0'
  expectPatch com.quillmere.hotfix 6.2.3.1
  expectEqual 'runs of the registered one' 1 "$(grep -c 'rc=0 after' "$renamed/rcplauncher.log")"
}

scenario_RegistrationOfAnInstanceThatIsGoneIsIgnored() {
  register Quillmere "$work/gone/Quillmere.app"
  instance
  install "$(hotfix registered)"

  expectSuccess 6.2.3.1 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
}

archives() { find "$rcp/deploy/installHistory" -name '*.zip' | sort; }

# proves: COLLECT-3
scenario_ArchiveHoldsTheTraceOfItsRun() {
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectEqual 'archives' 1 "$(archives | wc -l)"
  [[ $(archives) == */Quillmere_6.2.3_HOTFIX_INSTALL_*.zip ]] || broken "named $(archives)"
  expectTraceInside "$(archives)"
  python3 -m zipfile -e "$(archives)" "$work/unpacked"
  expectText 'Installing com.quillmere.hotfix.feature.group 6.2.3.1.' \
    "$work/unpacked/rcplauncher.log"
}

# The tool packs while the trace is still open: what it got is the beginning of the whole, down to
# the line that announces the archive.
expectTraceInside() {
  local inside=$work/inside
  rm -rf "$inside"
  python3 -m zipfile -e "$1" "$inside"
  expectText "Begin to call collection utility to gather log files for the HOTFIX_INSTALL" \
    "$inside/install_trace.log"
  cmp -n "$(stat -c %s "$inside/install_trace.log")" "$inside/install_trace.log" "$kTrace" ||
    broken 'the trace of another run'
}

# proves: FAILURE-7
scenario_RefusedRunIsCollectedToo() {
  instance
  install "$(hotfix second)"
  archives >"$work/before"
  install "$(hotfix first)"

  expectRefusal 7
  expectEqual 'new archives' 1 "$(archives | grep -c -v -x -F -f "$work/before")"
  expectTraceInside "$(archives | grep -v -x -F -f "$work/before")"
  expectText 'Higher version hotfix has been installed.' "$work/inside/install_trace.log"
}
