#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

#include "ctl/lint/Rule.h"

// All rules, in the order of their identifiers, which tell the subject: 1 the description, 2 the
// places of files and update sites, 3 manifests, 4 settings, 5 key stores, 6 extras, 7 the
// package's identity, 8 paths and the instance, 9 the package before. A rule that is given up
// leaves a gap.
namespace installer::ctl::lint {

inline constexpr Rule kRules[] = {
    // --- 1 hotfix.plist --------------------------------------------------------------------------
    {"HF101", Level::error, "The package has no hotfix.plist.",
     "Put the description at Contents/Resources/hotfix.plist in the package.",
     "Without a description nobody knows which application is meant. The run ends with code 8, "
     "which "
     "names the destination alone, as if no application were installed."},
    {"HF102", Level::error, "hotfix.plist cannot be read as a property list with a dictionary.",
     "Write it as an XML or binary property list whose root is a dictionary; plutil -lint tells "
     "where it breaks.",
     "A list that is damaged anywhere counts as none at all: no key of it is read. The run ends "
     "with "
     "code 8, as if no application were installed."},
    {"HF103", Level::error, "bundleName is missing.",
     "Name the application bundle, without \".app\".",
     "Without a name there is no application, and so no rcp home. The run ends with code 8, which "
     "names the destination alone."},
    {"HF104", Level::error, "bundleName is not the name of a bundle without \".app\".",
     "Write the bare name: Quillmere for Quillmere.app.",
     "The installer appends \".app\" to the name. With \".app\" in it the application "
     "Quillmere.app.app "
     "is looked for, and an empty name means the application \".app\": code 8 in both cases. A "
     "name "
     "with a slash leads into another folder."},
    {"HF105", Level::error, "frameworkPath is missing.",
     "Write the way from the bundle to the folder that holds \"rcp\": Contents/MacOS.",
     "The rcp home is the folder \"rcp\" below frameworkPath in the bundle. Without it there is "
     "none, "
     "and the run ends with code 8. A home that the description itself names does not count."},
    {"HF106", Level::error, "frameworkPath names the rcp folder itself.",
     "End frameworkPath with the folder that holds \"rcp\": the installer appends \"rcp\".",
     "The installer appends \"rcp\", so that the home would be rcp/rcp. There is no such folder, "
     "and "
     "the run ends with code 8."},
    {"HF107", Level::error, "frameworkPath leads out of the bundle.",
     "Leave \"..\" out of frameworkPath.",
     "The way begins at the bundle. One that climbs out of it ends in another application, or in "
     "none."},
    {"HF108", Level::error, "version is missing.", "Give the hotfix a version, as a text.",
     "The hotfix is installed, but nothing is recorded of it. The instance looks as if it had "
     "none: the "
     "next hotfix does not remove this one, and an older one is not refused."},
    {"HF109", Level::error, "version is empty.", "Give the hotfix a version.",
     "An empty version is recorded as such. As a text it sorts before all others, so that the "
     "package "
     "is refused with code 7 wherever a hotfix is installed."},
    {"HF110", Level::error, "A key is misspelt.",
     "Write the key as the installer knows it, letter case included.",
     "Keys that the installer does not know are passed over without a line, and the key that was "
     "meant "
     "counts as missing: its default is taken. A misspelt version records nothing, a misspelt "
     "allowMultiInstance can patch another instance than the one named, and a misspelt location "
     "leaves "
     "its file uninstalled."},
    {"HF111", Level::note, "The installer does not know a key.",
     "Nothing, when the key is for other programs.",
     "The key is passed over, and nothing of the package depends on it."},
    {"HF112", Level::error, "A value is not a text and counts as missing.",
     "Write the value as a <string>.",
     "The installer takes texts only: a number, a truth, a date or a list under one of these keys "
     "reads "
     "as if the key were not there. <real>1.5</real> is no version, and <true/> is no "
     "SKIPRUNNINGCHECK."},
    {"HF113", Level::warning, "allowMultiInstance is no truth and counts as false.",
     "Write <true/> or <false/>.",
     "Read as a truth are booleans, numbers, and texts that begin with Y, y, T, t or a digit from "
     "1 to "
     "9. Any other value counts as false without a line: the product's registration then decides "
     "which "
     "instance is patched."},
    {"HF114", Level::warning, "allowMultiInstance is an odd text that counts as true.",
     "Write <true/> or <false/>.",
     "Texts are read by their first letters: Y, y, T, t or a digit from 1 to 9 make them true, "
     "whatever "
     "follows. The registration of the product is not asked then."},
    {"HF115", Level::warning, "SKIPRUNNINGCHECK is neither \"true\" nor \"false\".",
     "Write the text true, in small letters, or leave the key out.",
     "Only the text true, to the letter, allows an installation while the application runs. True, "
     "YES "
     "and 1 count as no: the run is refused with code 6 where the author meant it to go on."},
    {"HF116", Level::error, "A value begins or ends with a blank.",
     "Take the blank, tab or line break away.",
     "Values are taken as they stand. A place with a blank at its end is another place, where "
     "nothing "
     "is; a version with a blank before it sorts before all others, so that the package is refused "
     "wherever a hotfix is installed."},
    {"HF117", Level::error, "A value holds a placeholder that the installer does not know.",
     "Use ${package}, in small letters and with both braces, or a plain path.",
     "Only ${package} is replaced, by the package's path. Everything else stays as it is written: "
     "the "
     "place does not exist, and its file is left out without a line."},
    {"HF118", Level::error, "${package} stands in bundleName, frameworkPath or version.",
     "Write a plain text.",
     "The checks before an installation take these keys as they stand; the installation replaces "
     "${package} in them. So the checks look at another application or version than the one that "
     "is "
     "patched or recorded."},
    {"HF119", Level::warning, "The version sorts otherwise as a text than by its numbers.",
     "Choose numbers with the same count of digits (1.09, 1.10). With --older only the version of "
     "that package counts.",
     "Versions compare as plain texts: 1.10 comes before 1.9. A package of version 1.10 is refused "
     "with "
     "code 7 where 1.9 is installed."},
    {"HF120", Level::warning, "No feature has the version of the hotfix.",
     "Make version and the features' versions agree.",
     "The installer records version, the platform installs the features of the manifest, and "
     "nobody "
     "compares them. Whoever asks the instance for its hotfix then gets a version that none of its "
     "features has."},
    {"HF121", Level::warning, "A key stands more than once.", "Leave one of them.",
     "The last one counts; those before it are lost without a line."},
    {"HF122", Level::note, "The registered application is patched, wherever it lies.",
     "Set allowMultiInstance to true when the application in the destination is meant.",
     "Without allowMultiInstance the product's registration tells where the application is, and "
     "the "
     "destination that the user has chosen counts only when there is none."},

    // --- 2 places of files, update sites ---------------------------------------------------------
    {"HF201", Level::error, "There is no install manifest.",
     "Put it at deploy/install.hotfix.xml beside the package, or name its place in "
     "pathToHotfixManifest.",
     "The checks pass, an installed hotfix is removed, and only then does the run end with code 4: "
     "the "
     "instance is left without any hotfix."},
    {"HF202", Level::warning, "There is no uninstall manifest.",
     "Put one at deploy/uninstall.hotfix.xml beside the package that removes what the install "
     "manifest "
     "adds.",
     "A missing one is passed over without a line. The hotfix can then never be removed: the next "
     "one "
     "leaves this one's features where they are."},
    {"HF203", Level::error, "A place is named where there is nothing.",
     "Mend the place or leave the key out.",
     "A place where nothing is counts as \"the hotfix brings none\", without a line. Nothing else "
     "is "
     "looked for then, not even the default place."},
    {"HF204", Level::error, "A place is no absolute path.",
     "Begin the place with ${package}, for what comes with the package.",
     "A path that begins with neither a slash nor ${package} begins where the installer was "
     "started, "
     "which is the root folder below a graphical installer. \"~\" and \"file:\" mean nothing "
     "there."},
    {"HF205", Level::warning, "A place is a path of one machine.",
     "Begin the place with ${package}.",
     "A path of the machine on which the package was made is mostly missing on others, and what is "
     "missing is left out without a line."},
    {"HF206", Level::error,
     "A file stands where a folder belongs, or a folder where a file belongs.",
     "Name the folder for keystore and extras, the file itself for manifests and settings.",
     "A key store's own path in keystore is no folder: all key stores of the instance are removed "
     "and "
     "none comes. Extras that are a file, and settings that are a folder, are passed over without "
     "a "
     "line."},
    {"HF207", Level::error, "The install manifest's place takes key stores or extras away.",
     "Name the places of key stores and extras, too, or move them beside the install manifest.",
     "A package that has its install manifest elsewhere has its key stores and extras there too. "
     "Those "
     "that lie in the usual folder are not used, and the instance's own key stores are removed all "
     "the "
     "same."},
    {"HF208", Level::error, "A link leads to a file that does not belong to the package.",
     "Put the file itself in the link's place.",
     "Links are followed to files of the package, of deploy beside it and of the instance alone. A "
     "manifest behind another link is not copied (code 4), settings are not merged."},
    {"HF209", Level::warning, "A file in the deploy folder is misnamed and not used.",
     "Give the file the name that the installer looks for.",
     "Only the files of known names are used. One with a name like it is passed over without a "
     "line, "
     "and so is what it was meant to bring."},
    {"HF210", Level::error, "Install and uninstall manifest are the same file.",
     "Write a manifest that removes what the other one adds.",
     "What is kept for the removal would install the hotfix once more."},
    {"HF221", Level::error, "An update site is not there.",
     "Put the site at updates/platform two folders above the package, or name its place in "
     "updateSiteList.",
     "The platform is told a site that does not exist. Provisioning fails, or installs nothing "
     "from "
     "there; an older hotfix is gone by then."},
    {"HF222", Level::error, "An update site is written as a URL.",
     "Write the path alone: the installer puts \"file:\" before it.",
     "The installer puts \"file:\" before the value, so that the platform is told file:file:/... "
     "or "
     "file:http://... and finds no site."},
    {"HF223", Level::error, "An update site holds nothing.",
     "Put features and plugins, or the site's indexes, into it.",
     "A folder without features, plugins, content.jar, content.xml or site.xml is no update site "
     "to "
     "the platform, and provisioning fails."},
    {"HF224", Level::error, "The update site lacks a feature.",
     "Put the feature of that version on the site, or mend the manifest.",
     "The platform cannot install what no site has: provisioning fails, the version is not "
     "recorded, and "
     "the older hotfix has been removed before."},
    {"HF225", Level::warning, "The update site lacks a plug-in of a feature.",
     "Put the plug-in of that version on the site, or give the --instance that has it.",
     "A feature is installed with all its plug-ins. One that neither the site nor the instance has "
     "lets provisioning fail after the older hotfix has been removed. What the plug-ins of a "
     "feature "
     "in a jar are is not looked at, and neither are those for some systems alone."},
    {"HF226", Level::warning, "The path of an update site holds #.", "Rename the folder.",
     "The path is handed to the platform as it stands, behind \"file:\". In a URL # begins a "
     "fragment: the platform looks elsewhere."},
    {"HF227", Level::error, "A feature on the update site cannot be read.",
     "Put its feature.xml there, with id and version of each plug-in.",
     "The platform cannot tell what belongs to the feature: provisioning fails, and the older "
     "hotfix "
     "has been removed before."},
    // --- 3 manifests -----------------------------------------------------------------------------
    {"HF301", Level::error, "The install manifest cannot be read as XML.",
     "Make it a well-formed file of at most 64 MiB; xmllint --noout tells where it breaks.",
     "It is copied, but cannot be read to replace ${installer.root}. The run ends with code 4 "
     "after an "
     "installed hotfix has been removed."},
    {"HF302", Level::error, "The install manifest lacks an element on the way to its features.",
     "Nest root / domain-object / object-data / install / installfeature / requirements / feature, "
     "each the child of the one before.",
     "The older hotfix is removed, and then features elsewhere are not found: ${installer.root} "
     "stays as it is in their urls, with an error line in the log. Without domain-object, "
     "object-data or install the platform takes the manifest for unusable, and the run ends with "
     "status 1. Without installfeature nothing is installed, with status 0."},
    {"HF303", Level::note, "The install manifest names no feature.",
     "Nothing, when the package only takes back an older hotfix.",
     "Provisioning has nothing to do, which counts as success. The version is recorded."},
    {"HF304", Level::error, "${installer.root} stands where it is not replaced.",
     "Write it in the url of a feature, in the first requirements of its installfeature.",
     "Only the url of each feature on the way root / first domain-object / first object-data / "
     "first "
     "install / installfeature / first requirements / feature is looked at. Elsewhere the "
     "placeholder "
     "reaches the platform as it is written, and nothing says so."},
    {"HF305", Level::error, "${installer.root} is misspelt.",
     "Write ${installer.root}, in small letters.",
     "Only this very text is replaced. Another one reaches the platform as a folder of that name."},
    {"HF306", Level::warning, "A feature that is installed has no url with ${installer.root}.",
     "Write url=\"${installer.root}/...\".",
     "The url tells the platform where the feature came from when a later run asks for it. One "
     "without "
     "the placeholder is a place of the machine on which the package was made."},
    {"HF307", Level::error, "A url has a scheme before ${installer.root}.",
     "Begin the url with ${installer.root}.",
     "The placeholder becomes \"file:\" and the package's path, so that the url begins with "
     "file:file:/..."},
    {"HF308", Level::error, "A feature has no id or no version.", "Name both.",
     "The platform cannot tell what is to be installed, and takes the whole manifest for "
     "unusable."},
    {"HF309", Level::warning, "A manifest names a feature twice.", "Leave one of them.",
     "Which of the two counts is up to the platform."},
    {"HF310", Level::error, "The action of a feature is neither install nor uninstall.",
     "Write action=\"install\" or action=\"uninstall\".",
     "The platform knows no other action, and takes the whole manifest for unusable."},
    {"HF311", Level::error, "The uninstall manifest cannot be read as XML.",
     "Make it a well-formed file of at most 64 MiB; xmllint --noout tells where it breaks.",
     "It is copied unread, and the installation succeeds. Only when the next hotfix comes does the "
     "platform fail to read it: this hotfix's features stay, and nobody knows of them any more."},
    {"HF312", Level::error, "The uninstall manifest lacks an element on the way to its features.",
     "Nest root / domain-object / object-data / install / installfeature / requirements / feature, "
     "each the child of the one before.",
     "It is copied unread. When the next hotfix comes, the platform takes it for unusable, or "
     "finds "
     "nothing to remove, which counts as success. Either way this hotfix's features stay, and "
     "nobody knows of them any more."},
    {"HF313", Level::error, "The uninstall manifest does not remove a feature that is installed.",
     "Name each feature of the install manifest, with action=\"uninstall\".",
     "A removal counts as done when the platform is content. A feature that is not named stays in "
     "the "
     "instance when the next hotfix comes, and nobody knows of it any more."},
    {"HF314", Level::warning, "The uninstall manifest holds ${installer.root}.",
     "Leave the url empty: what is removed comes from nowhere.",
     "The package may be gone when its hotfix is removed, so nothing is replaced then. The "
     "placeholder "
     "reaches the platform as it is written."},
    {"HF315", Level::error, "The uninstall manifest installs a feature.",
     "Write action=\"uninstall\".",
     "A feature without an action is installed, or makes the manifest unusable. The removal of the "
     "hotfix would install it again, or fail."},
    {"HF316", Level::error, "The uninstall manifest removes another version than is installed.",
     "Make the versions of both manifests agree.",
     "A launcher that looks for the very version finds none to remove, which counts as success: "
     "the "
     "feature stays. One that removes all versions of a feature does no harm, but which of the two "
     "an instance has is not the package's to know."},
    {"HF317", Level::note, "A feature has no action.",
     "Write action=\"install\" or action=\"uninstall\".",
     "Some launchers install such a feature, others take the whole manifest for unusable."},

    // --- 4 settings ------------------------------------------------------------------------------
    {"HF401", Level::error, "The settings are UTF-16 or UTF-32.",
     "Save the file as ISO 8859-1 or plain ASCII, with \\u escapes for other letters.",
     "The file is read byte by byte as ISO 8859-1. Each second character is a zero byte then: keys "
     "nobody knows are merged into the instance's settings."},
    {"HF402", Level::error, "The settings begin with a byte order mark.",
     "Save the file without one.",
     "The mark is read as three letters of the first key, which nobody knows then: the setting has "
     "no "
     "effect, and a key of that name stays in the instance."},
    {"HF403", Level::error, "The settings hold letters in UTF-8.",
     "Write letters beyond ASCII as \\u escapes, or save the file as ISO 8859-1.",
     "The file is read as ISO 8859-1, so that each such letter becomes two or more wrong ones."},
    {"HF404", Level::warning, "A line of the settings has no separator.",
     "Write key=value, or # before a comment.",
     "The whole line becomes a key with an empty value."},
    {"HF405", Level::warning, "A key of the settings stands more than once.", "Leave one of them.",
     "The last one counts; those before it are lost."},
    {"HF406", Level::error, "A line of the settings is continued.", "Write the value in one line.",
     "The installer's dialect knows no continued lines: what stands on the first line is dropped, "
     "key "
     "and all, and the next one is a value without a key, which is dropped too."},
    {"HF407", Level::warning, "A line of the settings ends with a backslash.",
     "Write the value in one line, and \\u005c for a backslash.",
     "Without a blank before it the backslash is a part of the value, and the next line is an "
     "entry of "
     "its own."},
    {"HF408", Level::note, "Comments of the settings are dropped by a merge.", "Nothing.",
     "An instance that has settings keeps none of the comments, neither its own nor the hotfix's. "
     "One "
     "that has none gets the file as it is."},
    {"HF409", Level::warning, "A line of the settings begins with \"!\".",
     "Begin comments with \"#\".", "Only \"#\" begins a comment. The line becomes a setting."},
    {"HF410", Level::error, "A merge changes a key of the settings.",
     "Choose a key without blank, \"=\", \":\", backslash and letters beyond ASCII.",
     "An escaped separator separates all the same: the key ends there, and the rest becomes a part "
     "of the value. Other escapes of a key are not decoded, and their backslash is doubled when "
     "the "
     "file is written. The platform then finds a key that nobody knows."},
    {"HF411", Level::warning, "A merge changes a value of the settings.",
     "Write \\u000a for a line feed, \\u0009 for a tab, \\u005c for a backslash, and \\u003a or "
     "\\u003d for a separator at the value's beginning.",
     "Escapes but \\u are not decoded, and their backslash is doubled when the file is written: "
     "the "
     "platform then reads a backslash and a letter. Of several backslashes side by side only the "
     "last one can stay, and separators at the value's beginning are dropped, escaped or not."},
    {"HF412", Level::error, "A line of the settings has no key.", "Write key=value.",
     "Entries without a key are never written."},
    {"HF413", Level::error, "The lines of the settings end with carriage returns alone.",
     "Save the file with line feeds.",
     "Only line feeds end lines: the whole file is one line, and so one key with one value."},
    {"HF414", Level::note, "The settings set nothing.", "Leave the file out.",
     "The instance's settings are written anew all the same, and lose their comments."},
    {"HF415", Level::error, "The settings cannot be read.",
     "Make it a regular file of at most 64 MiB.",
     "What cannot be read is not merged, without a line."},
    {"HF416", Level::warning, "A line of the settings begins with \"-X\".", "Choose another key.",
     "Such lines count as options of a Java virtual machine: the separator becomes a part of the "
     "value."},
    {"HF417", Level::error, "The settings hold a \\u without four hexadecimal digits.",
     "Write \\u005c for a backslash: c:\\u005cusers.",
     "A merge leaves a backslash before u single, also one that was written as two. The platform "
     "takes it for the escape of a letter that it cannot read, and loads none of the settings."},

    // --- 5 key stores ----------------------------------------------------------------------------
    {"HF501", Level::warning, "The package brings no key store.",
     "Put the key stores that the instance shall have into the key store folder, the instance's "
     "own "
     "among them.",
     "All key stores of the instance are removed before the package's are copied, also when it "
     "brings "
     "none. The instance is left without one."},
    {"HF502", Level::error, "A key store of the instance would vanish.",
     "Put it into the key store folder of the package.",
     "All key stores of the instance are removed before the package's are copied. One that the "
     "package "
     "does not bring is gone."},
    {"HF503", Level::error, "A file is meant as a key store and does not count as one.",
     "Begin its name with \".keystore\": .keystore.client for client.keystore.",
     "Key stores are the files whose names begin with .keystore, in any letter case. Another name "
     "is "
     "passed over without a line, while the instance's own key stores are removed all the same."},
    {"HF504", Level::error, "A key store is no file.", "Put a file in its place.",
     "A pipe, socket or device is not copied, while the instance's key store of that name is "
     "removed "
     "all the same. A folder is copied as a folder, which no program can read as a key store."},
    {"HF505", Level::error, "A key store is a link that leads out of the package.",
     "Put the file itself in the link's place.",
     "The link is copied as the link that it is, and leads nowhere in the instance, or where "
     "somebody "
     "else has put something."},
    {"HF506", Level::warning, "A key store is empty.", "Put the key store's content into it.",
     "The empty file replaces the instance's."},

    // --- 6 extras --------------------------------------------------------------------------------
    {"HF601", Level::warning, "A link in the extras leads out of them.",
     "Put the file itself in the link's place.",
     "Links are copied as they are: on the user's machine they lead nowhere, or elsewhere. Where "
     "the "
     "instance has a folder of that name, what a link to a folder leads to is brought into it, "
     "from "
     "wherever it is, and nothing of that is looked at here."},
    {"HF602", Level::error, "The extras hold a pipe, a socket or a device.", "Take it out.",
     "Such entries are never copied. Where the instance has no extras yet, everything that comes "
     "behind "
     "it in the folder is left out too, without a line."},
    {"HF603", Level::error, "Names in the extras differ in letter case alone.",
     "Rename one of them.",
     "They are one name to most disks of macOS: only one of the files arrives."},
    {"HF604", Level::error, "Names in the extras differ in their Unicode form alone.",
     "Rename one of them.",
     "A letter with a mark can be spelled as one character or as two. Both are one name to the "
     "disks of "
     "macOS: only one of the files arrives."},
    {"HF605", Level::error, "A name in the extras is not UTF-8.", "Rename the entry.",
     "Disks of macOS refuse such names: the file is left out without a line."},
    {"HF606", Level::note, "The extras are empty.", "Leave the folder out.",
     "An empty folder is passed over."},
    {"HF607", Level::warning, "The extras hold what another program has left there.",
     "Take it out.",
     "Everything in the folder is copied to every user, what finders, editors and version control "
     "have "
     "left among it."},
    {"HF608", Level::warning, "There is more than is looked at.",
     "Look at the rest by other means.",
     "Only so many entries of a folder, so many folders deep, and so much of a file are looked at, "
     "so that an answer "
     "comes "
     "in bounded time."},
    {"HF609", Level::error, "An entry of the extras takes the place of a folder of the instance.",
     "Rename the entry.",
     "A file, or a link to anything but a folder, replaces what stands in its place, a folder with "
     "all below it included."},
    // --- 7 the package's identity ----------------------------------------------------------------
    {"HF701", Level::warning, "The package has no identifier.",
     "Set CFBundleIdentifier in Contents/Info.plist of the package.",
     "The identifier is what the installer remembers to forget the package's receipt when the "
     "hotfix is "
     "removed. Without one the receipt stays, and the system goes on to think that it is "
     "installed."},
    {"HF702", Level::error, "The package's identifier cannot be read.",
     "Make Contents/Info.plist a property list whose CFBundleIdentifier is a text.",
     "What cannot be read counts as missing, without a line: the receipt stays when the hotfix is "
     "removed."},
    {"HF703", Level::error, "The package's identifier is empty or begins or ends with a blank.",
     "Write the identifier of the receipt, to the letter.",
     "The receipt is looked for under this very text. There is none, and the real one stays."},
    {"HF704", Level::note, "Info.plist tells another version than hotfix.plist.",
     "Make both agree.",
     "The installer goes by hotfix.plist, the system's list of packages by Info.plist."},

    // --- 8 paths and the instance ----------------------------------------------------------------
    {"HF801", Level::error, "The package's path holds a character that the installer refuses.",
     "Rename the package, or the folder or disk image that it is in, without ! \" ' ; \\ # % | = ? "
     ":",
     "The platform's tooling cannot handle such a path. The run ends with code 3 before anything "
     "is "
     "done."},
    {"HF802", Level::warning,
     "bundleName or frameworkPath holds a character that paths may not hold.",
     "Choose names without ! \" ' ; \\ # % | = ? :",
     "The check before an installation looks at the package and the destination alone. The "
     "platform "
     "fails later, on the whole path."},
    {"HF803", Level::error, "The package is for another bundle than the instance's.",
     "Mend bundleName, or give the instance that is meant.",
     "The installation goes into the bundle that the package names. This instance is not patched."},
    {"HF804", Level::error, "The instance has no platform at the package's frameworkPath.",
     "Mend frameworkPath, or give the instance that is meant.",
     "An instance is installed where rcp/deploy/install.xml is below frameworkPath. The run ends "
     "with "
     "code 8."},
    {"HF805", Level::error, "The instance has a hotfix that sorts higher.",
     "Choose a version that sorts behind the installed one as a text.",
     "Versions compare as plain texts. A lower one is refused with code 7."},
    {"HF806", Level::error, "The destination's path holds a character that the installer refuses.",
     "Move the application to a folder without ! \" ' ; \\ # % | = ? :",
     "The platform's tooling cannot handle such a path. The run ends with code 3 before anything "
     "is "
     "done."},

    // --- 9 the package before --------------------------------------------------------------------
    {"HF901", Level::error, "The version sorts before that of the older package.",
     "Choose a version that sorts behind the older one as a text.",
     "Versions compare as plain texts: 1.10 comes before 1.9. The package is refused with code 7 "
     "where "
     "the older one is installed."},
    {"HF902", Level::warning, "The version is that of the older package.", "Choose a new version.",
     "An equal version is not refused: the installed hotfix is removed and this one installed. "
     "Nobody "
     "can tell afterwards which of the two an instance has."},
    {"HF903", Level::warning, "The package is for another application than the older one.",
     "Mend bundleName or frameworkPath.",
     "The hotfix goes into another place: the older one is neither removed nor replaced."},
    {"HF904", Level::warning, "The older package leaves nothing by which it can be removed.",
     "Remove its features in this package's install manifest, with action=\"uninstall\".",
     "Without an uninstall manifest the older hotfix stays in the instance when this one is "
     "installed."},
    {"HF905", Level::warning, "A key store of the older package would vanish.",
     "Put it into the key store folder.",
     "All key stores of the instance are removed before the package's are copied."},
    {"HF906", Level::note, "What the older package brought as extras stays.",
     "Nothing, or bring a file of that name.",
     "Extras are merged: what this package does not bring is left as it is. The removal of a "
     "hotfix "
     "takes no extras away."},
};

// The rule of that identifier. One that is not in the table does not compile.
consteval const Rule& rule(std::string_view id) {
  const auto* const found = std::find_if(std::begin(kRules), std::end(kRules),
                                         [&](const Rule& one) { return one.id == id; });
  if (found == std::end(kRules)) throw "there is no such rule";
  return *found;
}

}  // namespace installer::ctl::lint
