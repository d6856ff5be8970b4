# shellcheck shell=sh
# Munki removes the item.
: "${hotfixctl:?}" "${destination:?}" "${application:?}"

as_person root "$hotfixctl" remove --color never "$destination/$application"
status=$?
if [ "$status" -eq 1 ]; then exit 0; fi # there was none
exit "$status"
