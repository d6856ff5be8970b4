# shellcheck shell=sh
# as_person FALLBACK COMMAND...: runs it as root for the person at the screen, whose the instance is
# to be, and within that person's session, which the pasteboard with the error record belongs to. At
# the login window there is nobody, and FALLBACK counts.
as_person() {
  USER=$(stat -f %Su /dev/console 2>/dev/null)
  case $USER in '' | root | loginwindow | _mbsetupuser) USER=$1 ;; esac
  export USER
  shift
  uid=$(id -u "$USER" 2>/dev/null)
  if [ "${uid:-0}" -ne 0 ] && launchctl print "gui/$uid" >/dev/null 2>&1; then
    launchctl asuser "$uid" "$@"
  else
    "$@"
  fi
}
