# shellcheck shell=sh
# Jamf runs it in a policy, with the volume in $1, the Mac's name in $2, the user in $3, and
#
#   $4  "install", or "remove" for whichever hotfix the application has; "install" without it
#   $5  where the hotfix is on the Mac: its folder, or the disk image; Jamf's folder for cached
#       packages without it
#   $6  the folder that the application is in
#
# It ends with hotfixctl's own status, which the policy's log tells together with cause and remedy.
: "${hotfixctl:?}" "${version:?}" "${destination:?}" "${application:?}" "${package:?}" "${item:?}" "${image:?}"
action=${4:-install}
place=${5:-$image}
destination=${6:-$destination}
user=${3:-root}

# The hotfix is then in the folder "found".
find_hotfix() {
  found=$place
  if [ -d "$place" ]; then return; fi
  volume=$(mktemp -d) || exit 1
  trap 'hdiutil detach -quiet "$volume"; rmdir "$volume"' EXIT
  if ! hdiutil attach -quiet -nobrowse -readonly -mountpoint "$volume" "$place"; then
    echo "There is no hotfix in $place: the policy has to bring it to the Mac before."
    exit 1
  fi
  found=$volume/$item
}

if [ ! -x "$hotfixctl" ]; then
  echo "$hotfixctl is missing: install the package that brings it."
  exit 1
fi
case $action in
  install)
    if [ "$("$hotfixctl" status --brief "$destination/$application")" = "$version" ]; then
      echo "$version is installed."
      exit 0
    fi
    find_hotfix
    as_person "$user" "$hotfixctl" install --color never --wait 600 --time-limit 1800 \
      "$found/$package" "$destination"
    ;;
  remove) as_person "$user" "$hotfixctl" remove --color never "$destination/$application" ;;
  *)
    echo "\"$action\" is neither install nor remove."
    exit 64
    ;;
esac
