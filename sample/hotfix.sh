# shellcheck shell=bash
# What the scripts that make hotfixes share: their options, and how they have the packages made by
# "hotfixctl new". Sourced behind lib.sh, never started. A script says what is its own:
#
#   packageName            the package's name, in which VERSION stands for the version
#   flatSite               the site's folder in the flat layout
#   bundleIdentifier       the package's identifier, in which ID and VERSION stand for themselves
#   defaultCustomization   prints the settings of a hotfix that is given none
#   defaultKeyStores FOLDER, defaultExtras FOLDER, makeSite FOLDER
#                          make what is not given in that folder, which is there; what is only
#                          needed meanwhile goes to the folder "work"

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

# The program that makes packages: HOTFIXCTL, else one that was built here.
findControl() {
  local build=${BASH_SOURCE[0]%/*}/../build candidate
  for candidate in ${HOTFIXCTL:+"$HOTFIXCTL"} "$build/release/hotfixctl" "$build/dev/hotfixctl"; do
    if [[ -x $candidate ]]; then
      printf '%s\n' "$candidate"
      return
    fi
  done
  fail "hotfixctl is not in ${build##*/}; build the target \"hotfixctl\" first, or set HOTFIXCTL"
}

# Sets "package", "deploy" and "site", absolute.
layOut() {
  local above
  if [[ -d $destination ]]; then
    destination=$(cd "$destination" && pwd)
  else
    above=$(dirname -- "$destination")
    mkdir -p -- "$above"
    destination=$(cd "$above" && pwd)/$(basename -- "$destination")
  fi
  if [[ $layout == default ]]; then
    deploy=$destination/mac/deploy
    site=$destination/updates/platform
  else
    deploy=$destination/deploy
    site=$destination/$flatSite
  fi
}

# Fills "content" with the options of "hotfixctl new" for what the package brings; what is not given
# is made in the folder "work".
gather() {
  local file identifier=${bundleIdentifier//ID/$id}
  content=(--identifier "${identifier//VERSION/$version}")
  if [[ -z $customization ]]; then
    customization=$work/customization
    defaultCustomization >"$customization"
  fi
  if ((${#keystores[@]} == 0)); then
    mkdir "$work/keystores"
    defaultKeyStores "$work/keystores"
    keystores=("$work"/keystores/.[!.]*)
  fi
  for file in "${keystores[@]}"; do content+=(--keystore "$file"); done
  if [[ -z $extras ]]; then
    extras=$work/extras
    mkdir "$extras"
    defaultExtras "$extras"
  fi
  if [[ -z $ownSite ]]; then
    ownSite=$work/new-site
    mkdir "$ownSite"
    makeSite "$ownSite"
  fi
  content+=(--customization "$customization" --extras "$extras" --site "$ownSite")
  if [[ $withdraw == yes ]]; then content+=(--withdraw); else content+=(--feature "${id}_$version"); fi
}

# The package as it should be; by --force also one that is meant to fail.
makePackage() {
  local options=(--version "$version" --bundle "$name" --package "$package" --layout "$layout"
    --site-folder "$flatSite" --force)
  [[ $multi == true ]] || options+=(--registered)
  [[ $skipRunningCheck == no ]] || options+=(--while-running)
  "$control" new "$destination" "${options[@]}" "${content[@]}" >/dev/null ||
    fail "the hotfix is not made"
}

# What a package as it should be has.
spoil() {
  [[ $withArtifacts == yes ]] || rm -rf "$site/plugins"
  [[ $uninstallManifest == yes ]] || rm "$deploy/uninstall.hotfix.xml"
}

makeHotfix() {
  control=$(findControl)
  work=$(mktemp -d)
  trap 'rm -rf -- "$work"' EXIT
  layOut
  gather
  makePackage
  spoil
  printf '%s\n' "${deploy%/*}/$package"
}
