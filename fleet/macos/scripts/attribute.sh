# shellcheck shell=sh
# Jamf asks which hotfix this Mac has: its version, "none", or what is wrong.
: "${hotfixctl:?}" "${destination:?}" "${application:?}"

if [ -x "$hotfixctl" ]; then
  result=$("$hotfixctl" status --brief "$destination/$application" 2>&1)
  : "${result:=hotfixctl gave no answer}"
else
  result='hotfixctl is missing'
fi
printf '<result>%s</result>\n' \
  "$(printf '%s\n' "$result" | sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g')"
