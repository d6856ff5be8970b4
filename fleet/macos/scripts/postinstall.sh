# shellcheck shell=sh
# Munki has put the hotfix there. The answer, with cause and remedy, goes to Munki's log.
: "${hotfixctl:?}" "${destination:?}" "${package:?}" "${carrier:?}"

as_person root "$hotfixctl" install --color never --wait 600 --time-limit 1800 \
  "$carrier/$package" "$destination"
status=$?
rm -rf "$carrier"
exit "$status"
