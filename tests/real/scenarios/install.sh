# shellcheck shell=bash
# A hotfix on an instance that has none.

# shellcheck source=../steps.sh
. "${BASH_SOURCE[0]%/*}/../steps.sh"

kConfiguration=/tmp/com.kiv.rcp.platform.internal.configuration

scenario_FirstInstallBringsCodeThatRuns() {
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.1
  expectPatch com.quillmere.hotfix 6.2.3.1
  expectExists "$rcp/eclipse/features/com.quillmere.hotfix_6.2.3.1/feature.xml"
  expectRecorded installedHotfixBundleID com.quillmere.hotfix.pkg
  expectRecorded SKIPRUNNINGCHECK false
  expectRecorded version 6.2.3
}

scenario_FirstInstallBringsSettingsKeyStoresAndExtras() {
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectText 'com.quillmere.hotfix/version=6.2.3.1' "$rcp/plugin_customization.ini"
  expectText 'com.kiv.rcp.base/locale=en' "$rcp/plugin_customization.ini"
  expectText 'com.kiv.rcp.base/server=hotfix.quillmere.example' "$rcp/plugin_customization.ini"
  expectNoText '=quillmere.example' "$rcp/plugin_customization.ini"
  cmp "$work/first/mac/deploy/.keystore" "$rcp/deploy/.keystore" || broken 'an old key store'
  expectEqual 'the key in the store' hotfix "$(keytool -list -keystore "$rcp/deploy/.keystore" \
    -storepass changeit 2>/dev/null | sed -n 's/^\(hotfix\|platform\),.*/\1/p')"
  diff -r "$work/first/mac/deploy/extras" "$rcp/deploy/extras" || broken 'other extras'
}

scenario_ContentOfOnesOwnIsInstalled() {
  local package own=$work/own
  instance
  hotfix first >/dev/null
  mkdir -p "$own/extras/folder"
  echo 'my.plugin/setting=mine' >"$own/settings"
  echo 'my extra' >"$own/extras/folder/file"
  cp "$rcp/deploy/.keystore" "$own/trust.p12"
  package=$("$kEquinox/make-hotfix" --customization "$own/settings" --keystore "$own/trust.p12" \
    --extras "$own/extras" --site "$work/first/updates/platform" "$work/made" 6.2.3.1)
  install "$package"

  expectSuccess 6.2.3.1 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
  expectText 'my.plugin/setting=mine' "$rcp/plugin_customization.ini"
  expectText 'my extra' "$rcp/deploy/extras/folder/file"
  expectEqual 'the key stores' .keystore.trust.p12 \
    "$(find "$rcp/deploy" -name '.keystore*' -printf '%f\n')"
}

# proves: MANIFEST-5
scenario_ManifestsPointToThePackage() {
  local package
  instance
  package=$(hotfix first)
  install "$package"

  expectSuccess 6.2.3.1 '0 0'
  expectText "url=\"file:$package/../../updates/platform\"" "$rcp/deploy/install.update.xml"
  cmp "$work/first/mac/deploy/uninstall.hotfix.xml" "$rcp/deploy/uninstall.hotfix.xml" ||
    broken 'another uninstall manifest'
  expectExists "$rcp/deploy/install.1511121200.xml"
  expectText 'id="com.quillmere.hotfix"' "$rcp/deploy/install.xml"
  expectText "-DprovUpdateSiteListOverride=file:$package/../../updates/platform " \
    "$rcp/rcplauncher.log"
}

# proves: SUCCESS-2
scenario_InstallIdFollowsTheManifestVersionBeforeTheHotfix() {
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectEqual 'the install id' 1511121200 "$(launcherProperty rcp.install.id)"
  expectText 'rcp.install.id=1511121200' "$rcp/systemdata/.config/rcpinstall.properties"
  [[ $(launcherProperty provisioning.manifest.version) =~ ^[0-9]{10}$ ]] || broken 'no new stamp'
  [[ $(launcherProperty provisioning.manifest.version) != 1511121200 ]] || broken 'the old stamp'
}

scenario_PackageWithItsOwnSiteListIsInstalled() {
  instance
  install "$(hotfix second)"

  expectSuccess 6.2.3.2 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.2
}

scenario_GivenRcpDataIsTheWorkspace() {
  local data=$work/data
  instance
  cp -a "$rcp/systemdata" "$data"
  install "$(hotfix first)" -rcpdata "$data"

  expectSuccess 6.2.3.1 '0 0'
  expectTrace 'Caller specified rcpdata'
  expectEqual 'runs with that workspace' 2 "$(grep -c -- "-data $data$" "$rcp/rcplauncher.log")"
  expectEqual 'the workspace handed on' "$data" "$(plist "$kConfiguration" P_RCPDATA)"
  expectEqual 'the rcp home handed on' "$rcp" "$(plist "$kConfiguration" pathToRcpHome)"
}

scenario_WithoutRcpDataTheWorkspaceIsSystemdata() {
  instance
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0'
  expectTrace "Caller didn't specify rcpdata, use rcp/systemdata"
  expectEqual 'runs with that workspace' 2 \
    "$(grep -c -- "-data $rcp/systemdata$" "$rcp/rcplauncher.log")"
  expectEqual 'the workspace handed on' "$rcp/systemdata" "$(plist "$kConfiguration" P_RCPDATA)"
}

scenario_UnusedWorkspaceInstallsTwiceAndTheSecondFindsNothingNew() {
  instance "$work/apps" --no-workspace
  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 0 [02]'
  expectTrace 'Hot fix workspace flag file is missing, launching install new hotfix twice'
  expectMissing "$rcp/systemdata/.config"
  expectPatch com.quillmere.hotfix 6.2.3.1
  expectExists "$rcp/systemdata/.config/rcpinstall.properties"
}

scenario_StartedClientEndsTheDoubledInstall() {
  instance "$work/apps" --no-workspace
  install "$(hotfix first)"
  expectSuccess 6.2.3.1 '0 0 [02]'
  clientSays >/dev/null

  install "$(hotfix first)"

  expectSuccess 6.2.3.1 '0 2 2 0'
  expectNoTrace 'workspace flag file is missing'
}

scenario_BlanksUmlautsAndChineseCharactersInEveryPath() {
  local place="$work/Größere Änderung 新版本"
  instance "$place/Anwendungen für alle 应用程序"
  cp -a "$rcp/systemdata" "$place/meine Daten 数据"
  install "$(hotfix first "$place/Päckchen 修补程序")" -rcpdata "$place/meine Daten 数据"

  expectSuccess 6.2.3.1 '0 0'
  expectRoots com.quillmere.hotfix.feature.group/6.2.3.1
  expectPatch com.quillmere.hotfix 6.2.3.1

  install "$(hotfix second "$place/Päckchen 修补程序")" -rcpdata "$place/meine Daten 数据"

  expectSuccess 6.2.3.2 '0 2 2 0'
  expectPatch com.quillmere.hotfix 6.2.3.2
}

scenario_NoLocaleAndAlmostNoEnvironmentAtAll() {
  local package
  instance "$work/Größere 应用程序"
  package=$(hotfix first "$work/Päckchen")
  status=0
  env -i "$HOTFIX_PROGRAM" "$package" "$destination" || status=$?
  runs=$(launcherResults)

  expectSuccess 6.2.3.1 '0 0'
  expectPatch com.quillmere.hotfix 6.2.3.1
}

# proves: LOCK-1
scenario_SecondInstallerWaitsForTheFirst() {
  local first second
  instance
  hotfix first >/dev/null
  hotfix second >/dev/null
  "$HOTFIX_PROGRAM" "$(hotfix first)" "$destination" >"$work/output1" &
  first=$!
  awaitLine 'rcplauncher: 20' "$rcp/rcplauncher.log"
  "$HOTFIX_PROGRAM" "$(hotfix second)" "$destination" >"$work/output2" &
  second=$!

  wait "$first" || broken 'the first failed'
  wait "$second" || broken 'the second failed'

  expectEqual "the launcher's results" '0 0 0 2 2 0' "$(launcherResults)"
  expectRecorded hotfixVersion 6.2.3.2
  expectPatch com.quillmere.hotfix 6.2.3.2
}
