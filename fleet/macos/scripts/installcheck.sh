# shellcheck shell=sh
# Munki asks whether the item is to be installed: 0 means yes, anything else no.
: "${hotfixctl:?}" "${version:?}" "${destination:?}" "${application:?}"

# What the item requires comes before it.
[ -x "$hotfixctl" ] || exit 0
"$hotfixctl" status --brief --at-least "$version" "$destination/$application"
case $? in
  0) exit 1 ;; # this hotfix is there, or a higher one
  3) exit 1 ;; # there is no application that it could be for
  *) exit 0 ;; # where nothing can be told the installation tells why
esac
