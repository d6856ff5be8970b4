# shellcheck shell=bash
# Shared by the scripts that make the sample: texts in the forms that its files need.
# Sourced, never started.

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

# The text as content or attribute value of an XML element.
xmlText() {
  printf '%s' "$1" | sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g' -e 's/"/\&quot;/g'
}

# The text as a value in a Java properties file, which is plain ASCII: everything else is written as
# the escapes of its UTF-16 units.
propertyValue() {
  local LC_ALL=C.UTF-8 at one unit
  for ((at = 0; at < ${#1}; ++at)); do
    one=${1:at:1}
    case $one in
      [\\:=#!]) printf '\\%s' "$one" ;;
      [[:ascii:]]) printf '%s' "$one" ;;
      *)
        for unit in $(printf '%s' "$one" | iconv -f UTF-8 -t UTF-16BE | od -An -v -tx1 -w2 | tr -d ' '); do
          printf '\\u%s' "$unit"
        done
        ;;
    esac
  done
}

# plistBegin FILE; plistString FILE KEY VALUE; plistEnd FILE
plistBegin() {
  cat >"$1" <<'EOF'
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
EOF
}

plistString() {
  printf '\t<key>%s</key>\n\t<string>%s</string>\n' "$(xmlText "$2")" "$(xmlText "$3")" >>"$1"
}

plistEnd() {
  printf '</dict>\n</plist>\n' >>"$1"
}

# manifest FILE ACTION ID VERSION URL DESCRIPTION: a provisioning manifest with one feature.
manifest() {
  cat >"$1" <<EOF
<?xml version="1.0" encoding="UTF-8"?>
<manifest>
  <domain-object>
    <object-data>
      <install>
        <installfeature id="$3" description="$(xmlText "$6")">
          <requirements>
            <feature id="$3" version="$4" url="$(xmlText "$5")" action="$2"/>
          </requirements>
        </installfeature>
      </install>
    </object-data>
  </domain-object>
</manifest>
EOF
}

# feature FOLDER ID VERSION LABEL PLUGIN...: a feature's folder; a plug-in is given as id_version.
feature() {
  local folder=$1 id=$2 version=$3 label=$4 plugin
  shift 4
  mkdir -p "$folder"
  {
    printf '<?xml version="1.0" encoding="UTF-8"?>\n'
    printf '<feature id="%s" version="%s" label="%s">\n' "$id" "$version" "$(xmlText "$label")"
    for plugin in "$@"; do
      printf '  <plugin id="%s" version="%s" unpack="true"/>\n' "${plugin%%_*}" "${plugin#*_}"
    done
    printf '</feature>\n'
  } >"$folder/feature.xml"
}

# plugin FOLDER ID VERSION [BUNDLE]: a plug-in's folder; it may need a bundle.
plugin() {
  mkdir -p "$1/META-INF"
  cat >"$1/META-INF/MANIFEST.MF" <<EOF
Manifest-Version: 1.0
Bundle-ManifestVersion: 2
Bundle-SymbolicName: $2
Bundle-Version: $3
EOF
  [[ -z ${4-} ]] || printf 'Require-Bundle: %s\n' "$4" >>"$1/META-INF/MANIFEST.MF"
}

# Names that end up in the names of files and in XML.
checkPlain() {
  [[ $2 =~ ^[A-Za-z0-9._-]+$ && $2 =~ [^.] ]] || fail "$1 \"$2\" is not a plain name"
}
