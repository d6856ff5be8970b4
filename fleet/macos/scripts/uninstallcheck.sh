# shellcheck shell=sh
# Munki asks whether the item is to be removed: 0 means yes, anything else no. The same for all
# versions of the item: whichever hotfix is recorded goes.
: "${hotfixctl:?}" "${destination:?}" "${application:?}"

[ -x "$hotfixctl" ] || exit 1
recorded=$("$hotfixctl" status --brief "$destination/$application")
echo "$recorded"
case $recorded in
  none | 'none ('* | 'no instance') exit 1 ;;
  *) exit 0 ;; # where nothing can be told the removal tells why
esac
