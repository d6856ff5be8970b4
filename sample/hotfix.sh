# shellcheck shell=bash
# What the scripts that make hotfixes share: their options, and everything of a hotfix but the site
# that its feature comes from. Sourced behind lib.sh, never started. A script says what is its own:
#
#   packageName            the package's name, in which VERSION stands for the version
#   flatSite               the site's folder in the flat layout
#   bundleIdentifier       the package's identifier, in which ID and VERSION stand for themselves
#   defaultCustomization   prints the settings of a hotfix that is given none
#   defaultKeyStores FOLDER, defaultExtras FOLDER, makeSite FOLDER
#                          make what is not given in that folder, which is there

: "${packageName:?}" "${flatSite:?}" "${bundleIdentifier:?}"

usage() {
  cat <<EOF
Usage: make-hotfix [options] DESTINATION [VERSION]
Makes a hotfix package below DESTINATION and prints its path.
  --version VERSION          version of the hotfix, its feature and its plug-in (6.2.3.1)
  --name NAME                bundle that it is for, without ".app" (Quillmere); also --bundle-name
  --id ID                    identifier of its feature and its plug-in (com.quillmere.hotfix)
  --package NAME             name of the package ($packageName)
  --layout default|flat      default: package and deploy in mac, the site in updates/platform;
                             flat: package and deploy side by side, the site in $flatSite,
                             named by updateSiteList; also --flat
  --registered               look the bundle up in the product registration first
  --skip-running-check       may be installed while the application runs
  --no-uninstall-manifest    cannot be removed again
  --withdraw                 brings no feature: what an older hotfix brought is only removed
Sites with which provisioning will fail:
  --without-feature          the site lacks the feature
  --without-artifacts        the site names the plug-in and does not hold it
  --requires BUNDLE          the plug-in needs a bundle; fails where that is missing
Content of your own in the place of the sample's:
  --customization FILE       settings of the plug-ins, as plugin_customization.ini
  --keystore FILE            a key store, any number of times; a name that does not begin with
                             .keystore gets that before it, other key stores are not installed
  --extras FOLDER            what is in it becomes the content of deploy/extras
  --site FOLDER              what is in it becomes the update site; --id and --version then name
                             a feature of it
EOF
}

version=6.2.3.1 name=Quillmere id=com.quillmere.hotfix package='' layout=default destination=''
multi=true skipRunningCheck=no uninstallManifest=yes withdraw=no
withFeature=yes withArtifacts=yes requires=''
customization='' keystores=() extras='' ownSite=''

# readOptions ARGUMENT...
readOptions() {
  while (($#)); do
    case $1 in
      --version | --name | --id | --package | --layout | --requires | --customization | --extras | \
        --bundle-name | --keystore | --site)
        (($# > 1)) || fail "$1 needs a value"
        takeValue "$1" "$2"
        shift
        ;;
      --flat) layout=flat ;;
      --registered) multi=false ;;
      --skip-running-check) skipRunningCheck=yes ;;
      --no-uninstall-manifest) uninstallManifest=no ;;
      --withdraw) withdraw=yes ;;
      --without-feature) withFeature=no ;;
      --without-artifacts) withArtifacts=no ;;
      --help) usage && exit 0 ;;
      -*) fail "unknown option $1 (see --help)" ;;
      *) takePositional "$1" ;;
    esac
    shift
  done
  checkOptions
}

takeValue() {
  case $1 in
    --bundle-name) name=$2 ;;
    --keystore) keystores+=("$2") ;;
    --site) ownSite=$2 ;;
    *) printf -v "${1#--}" %s "$2" ;;
  esac
}

positionals=0
takePositional() {
  case $((++positionals)) in
    1) destination=$1 ;;
    2) version=$1 ;;
    *) fail "more than one destination and one version (see --help)" ;;
  esac
}

checkOptions() {
  local file folder
  [[ -n $destination ]] || fail "no destination (see --help)"
  checkPlain "the version" "$version"
  checkPlain "the identifier" "$id"
  [[ -z $requires ]] || checkPlain "the required bundle" "$requires"
  [[ $layout == default || $layout == flat ]] || fail "unknown layout \"$layout\""
  package=${package:-${packageName//VERSION/$version}}
  [[ $package != */* ]] || fail "the package \"$package\" cannot be a file's name"
  for file in ${customization:+"$customization"} "${keystores[@]}"; do
    [[ -f $file ]] || fail "there is no file $file"
  done
  for folder in ${extras:+"$extras"} ${ownSite:+"$ownSite"}; do
    [[ -d $folder ]] || fail "there is no folder $folder"
  done
  [[ -z $ownSite || $withFeature == yes ]] || fail "a site of your own has the features that it has"
}

# Sets "package", "deploy", "site" and the way from the package to the site.
layOut() {
  local made
  mkdir -p "$destination"
  destination=$(cd "$destination" && pwd)
  if [[ $layout == default ]]; then
    package=$destination/mac/$package
    site=$destination/updates/platform
    siteFromPackage=/../../updates/platform
  else
    package=$destination/$package
    site=$destination/$flatSite
    siteFromPackage=/../$flatSite
  fi
  deploy=${package%/*}/deploy
  for made in "$package" "$deploy" "$site"; do
    [[ ! -e $made ]] || fail "$made exists already"
  done
  mkdir -p "$package/Contents/Resources" "$deploy/extras" "$site"
}

writePackage() {
  local plist=$package/Contents/Resources/hotfix.plist info=$package/Contents/Info.plist identifier
  plistBegin "$plist"
  plistString "$plist" bundleName "$name"
  plistBoolean "$plist" allowMultiInstance "$multi"
  plistString "$plist" frameworkPath Contents/MacOS
  plistString "$plist" version "$version"
  [[ $skipRunningCheck == no ]] || plistString "$plist" SKIPRUNNINGCHECK true
  # The default layout is where the installer looks by itself.
  [[ $layout == default ]] || plistString "$plist" updateSiteList "\${package}$siteFromPackage"
  plistEnd "$plist"
  identifier=${bundleIdentifier//ID/$id}
  plistBegin "$info"
  plistString "$info" CFBundleIdentifier "${identifier//VERSION/$version}"
  plistString "$info" CFBundleShortVersionString "$version"
  plistEnd "$info"
}

# Whoever removes a feature needs no site, least of all one that may be gone.
writeManifests() {
  local install=install uninstall=uninstall
  if [[ $withdraw == yes ]]; then install='' uninstall=''; fi
  manifest "$deploy/install.hotfix.xml" "$install" "$id" "$version" \
    "\${installer.root}$siteFromPackage" "Hotfix $version"
  [[ $uninstallManifest == no ]] ||
    manifest "$deploy/uninstall.hotfix.xml" "$uninstall" "$id" "$version" '' "Hotfix $version"
}

copyKeyStores() {
  local file target
  for file in "${keystores[@]}"; do
    target=${file##*/}
    [[ ${target,,} == .keystore* ]] || target=.keystore.$target
    [[ ! -e $deploy/$target ]] || fail "two key stores would be $target"
    cp -- "$file" "$deploy/$target"
  done
}

fillDeploy() {
  if [[ -n $customization ]]; then
    cp -- "$customization" "$deploy/plugin_customization.ini"
  else
    defaultCustomization >"$deploy/plugin_customization.ini"
  fi
  if ((${#keystores[@]} > 0)); then copyKeyStores; else defaultKeyStores "$deploy"; fi
  if [[ -n $extras ]]; then cp -R -- "$extras/." "$deploy/extras"; else defaultExtras "$deploy/extras"; fi
}

fillSite() {
  if [[ -n $ownSite ]]; then cp -R -- "$ownSite/." "$site"; else makeSite "$site"; fi
  [[ $withArtifacts == yes ]] || rm -rf "$site/plugins"
}

makeHotfix() {
  layOut
  writePackage
  writeManifests
  fillDeploy
  fillSite
  printf '%s\n' "$package"
}
