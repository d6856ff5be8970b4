"""What is made for Munki and Jamf: its form, and its scripts run in the life of a hotfix.

    macs_test.py BUILD [TEST...]

On a machine of its own, which tests/fleet/macs makes."""

import hashlib
import os
import plistlib
import shutil
import signal
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(sys.argv[1])
CONTROL = Path("/usr/local/bin/hotfixctl")
BUNDLE = Path("/Applications/Quillmere.app")
HOME = BUNDLE / "Contents/MacOS/rcp"
SUPPORT = Path("/Library/Application Support")
TEMPORARY = Path("/items/temporary")
WAITING_ROOM = SUPPORT / "JAMF/Waiting Room"
SCRIPTS = ("installcheck_script", "postinstall_script", "uninstallcheck_script", "uninstall_script")
# What /bin/sh is on one Mac or another.
SHELLS = (("dash",), ("bash", "--posix"), ("zsh", "--emulate", "sh"))


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL, **options)


def make_hotfix(name, version, *options):
    folder = Path("/hotfixes", name)
    run(ROOT / "sample/make-hotfix", "--version", version, *options, folder,
        env={**os.environ, "HOTFIXCTL": str(CONTROL)})
    return folder


def describe(folder, **changes):
    """Changes the package's description; None takes a key out."""
    path = folder / "mac/HF.pkg/Contents/Resources/hotfix.plist"
    description = {**plistlib.loads(path.read_bytes()), **changes}
    path.write_bytes(plistlib.dumps({key: value for key, value in description.items() if value is not None}))
    return folder


class MacsTest(unittest.TestCase):
    def setUp(self):
        for place in ("/Applications", "/Library", "/var/lib", "/hotfixes", "/items"):
            Path(place).mkdir(exist_ok=True)
            run("mount", "-t", "tmpfs", "-o", "mode=0755", "fresh", place)
            self.addCleanup(run, "umount", place)
        # What the runs before have left; this tree may be below it, too.
        for path in Path("/tmp").iterdir():
            if path.is_file():
                path.unlink()
        SUPPORT.mkdir()
        TEMPORARY.mkdir()
        Path("/console").write_text("root\n")
        Path("/sessions").write_text("")
        Path("/calls").write_text("")
        run(ROOT / "sample/make-instance", "--programs", BUILD / "sample", "/Applications")
        self._shell = ("sh",)

    # --- Making ----------------------------------------------------------------------------------

    def make(self, hotfix, *options, status=0):
        made = subprocess.run([ROOT / "fleet/macos/make-items", *options, hotfix, "/items"], check=False,
                              capture_output=True, text=True)
        self.assertEqual(made.returncode, status, made.stderr)
        return made

    def item(self, hotfix, *options):
        """The newest item's pkginfo."""
        made = self.make(hotfix, *options).stdout.splitlines()
        return plistlib.loads(Path(made[1]).read_bytes())

    def refused(self, hotfix, *options):
        made = self.make(hotfix, *options, status=1)
        self.assertEqual(list(Path("/items").rglob("*.plist")), [])
        self.assertTrue(made.stderr.startswith("make-items: ") and made.stderr.count("\n") == 1, made.stderr)
        return made.stderr

    # --- Running ---------------------------------------------------------------------------------

    def script(self, text, *arguments):
        """The status and the words of a script, as Munki and Jamf run it: a file of its own."""
        path = Path("/script")
        path.write_text(text, encoding="utf-8")
        ended = subprocess.run([*self._shell, path, *arguments], check=False, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True, cwd="/",
                               env={"PATH": "/items/planted:/usr/bin:/bin", "TMPDIR": str(TEMPORARY)})
        return ended.returncode, ended.stdout

    def is_needed(self, info):
        status, words = self.script(info["installcheck_script"])
        self.assertIn(status, (0, 1), words)
        return status == 0

    def is_to_remove(self, info):
        status, words = self.script(info["uninstallcheck_script"])
        self.assertIn(status, (0, 1), words)
        return status == 0

    def bring(self, info):
        """What Munki does with the image."""
        volume = Path("/items/volume")
        volume.mkdir()
        run("tar", "-x", "-f", Path("/items/munki/pkgs", info["installer_item_location"]), "-C", volume)
        for copy in info["items_to_copy"]:
            to = Path(copy["destination_path"], copy["destination_item"])
            run("cp", "-R", volume / copy["source_item"], to)
            run("chmod", "-R", copy["mode"], to)
        shutil.rmtree(volume)

    def install(self, info):
        self.bring(info)
        answer = self.script(info["postinstall_script"])
        self.assertEqual(list(SUPPORT.glob("*.hotfix")), [])
        return answer

    def attribute(self, name="QuillmereHotfix"):
        status, words = self.script(Path(f"/items/jamf/{name}-attribute.sh").read_text(encoding="utf-8"))
        self.assertEqual(status, 0)
        self.assertTrue(words.startswith("<result>") and words.endswith("</result>\n"), words)
        return words[len("<result>"):-len("</result>\n")]

    def policy(self, version, *parameters):
        text = Path(f"/items/jamf/QuillmereHotfix-{version}-policy.sh").read_text(encoding="utf-8")
        return self.script(text, "/", "mac-1", "", *parameters)

    def start_application(self):
        application = subprocess.Popen([BUNDLE / "Contents/MacOS/Quillmere", "--stay", "600"],
                                       stdout=subprocess.DEVNULL)
        self.addCleanup(application.wait)
        self.addCleanup(application.kill)
        return application

    def record(self, **values):
        path = HOME / "installInfo.plist"
        path.write_bytes(plistlib.dumps({**plistlib.loads(path.read_bytes()), **values}))

    # --- The item --------------------------------------------------------------------------------

    def testTheItemTellsMunkiWhatItIsAndCarries(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix)

        for script in SCRIPTS:
            self.assertTrue(info.pop(script).startswith("#!/bin/sh\n"))
        image = Path("/items/munki/pkgs/hotfixes/QuillmereHotfix-6.2.3.1.dmg")
        files = sum(path.lstat().st_size for path in hotfix.rglob("*"))
        self.assertEqual(info, {
            "name": "QuillmereHotfix", "version": "6.2.3.1", "display_name": "Quillmere hotfix 6.2.3.1",
            "description": "Brings the hotfix 6.2.3.1 to Quillmere.", "catalogs": ["testing"],
            "minimum_os_version": "11.0", "requires": ["hotfix-installer"],
            "installer_type": "copy_from_dmg",
            "installer_item_location": "hotfixes/QuillmereHotfix-6.2.3.1.dmg",
            "installer_item_hash": hashlib.sha256(image.read_bytes()).hexdigest(),
            "installer_item_size": image.stat().st_size // 1024 + 1, "installed_size": files // 1024 + 1,
            "items_to_copy": [{"source_item": "QuillmereHotfix-6.2.3.1", "destination_path": str(SUPPORT),
                               "destination_item": "QuillmereHotfix-6.2.3.1.hotfix", "user": "root",
                               "group": "wheel", "mode": "go-w"}],
            "unattended_install": True, "unattended_uninstall": True,
            "blocking_applications": ["Quillmere.app"], "uninstallable": True,
            "uninstall_method": "uninstall_script"})

    def testTheImageCarriesTheWholeHotfixInAFolderOfItsOwn(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        (hotfix / "mac/link").symlink_to("HF.pkg")
        info = self.item(hotfix)
        self.assertRegex(Path("/calls").read_text(), "hdiutil create -srcfolder .* -volname QuillmereHotfix-6.2.3.1 "
                         "-fs HFS[+] -format UDZO -ov -quiet /items/munki/pkgs/hotfixes/QuillmereHotfix-6.2.3.1.dmg\n")

        self.bring(info)

        brought = SUPPORT / "QuillmereHotfix-6.2.3.1.hotfix"
        run("diff", "-r", hotfix, brought)
        self.assertTrue((brought / "mac/link").is_symlink())

    def testOptionsNameWhatThePackageCannotTell(self):
        info = self.item(make_hotfix("1", "6.2.3.1"), "--name", "Fix", "--display-name", "Säfer & <faster>",
                         "--catalog", "a", "--catalog", "b", "--requires", "Tools", "--update-for", "Quillmere")

        self.assertEqual([info[key] for key in ("name", "display_name", "catalogs", "requires", "update_for")],
                         ["Fix", "Säfer & <faster>", ["a", "b"], ["Tools"], ["Quillmere"]])
        self.assertEqual(self.attribute("Fix"), "none")

    def testEverybodyMayReadWhatIsMadeAndRunTheScripts(self):
        self.addCleanup(os.umask, os.umask(0o077))
        self.item(make_hotfix("1", "6.2.3.1"))

        made = [path for place in ("munki", "jamf") for path in Path("/items", place).rglob("*")]
        self.assertEqual({(path.suffix, path.stat().st_mode & 0o777) for path in made},
                         {("", 0o755), (".dmg", 0o644), (".plist", 0o644), (".sh", 0o755)})

    def testAnImageThatWasMadeElsewhereIsTakenAsItIs(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        Path("/items/made.dmg").write_bytes(b"image" * 1000)

        info = self.item(hotfix, "--image", "/items/made.dmg")

        self.assertEqual(info["installer_item_hash"], hashlib.sha256(b"image" * 1000).hexdigest())
        self.assertEqual(info["installer_item_size"], 5)
        self.assertEqual(Path("/calls").read_text(), "")
        self.assertIn("missing.dmg", self.refused_again(hotfix, "--image", "/items/missing.dmg"))

    def refused_again(self, *arguments):
        shutil.rmtree("/items/munki")
        return self.refused(*arguments)

    def testWhereNoImageCanBeMadeThereIsNoItem(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        program = Path("/usr/bin/hdiutil")
        kept = program.read_bytes()
        self.addCleanup(program.chmod, 0o755)
        self.addCleanup(program.write_bytes, kept)

        program.write_text("#!/bin/sh\nexit 3\n")
        self.assertIn("status 3", self.refused(hotfix))

        program.unlink()
        self.assertIn("--image", self.refused(hotfix))

    def testAHotfixForARunningApplicationWaitsForNobody(self):
        info = self.item(make_hotfix("1", "6.2.3.1", "--skip-running-check"))

        self.assertEqual(info["blocking_applications"], [])

    def testWhatCannotBeRemovedIsNotOffered(self):
        for hotfix in (make_hotfix("1", "6.2.3.1", "--no-uninstall-manifest"),
                       describe(make_hotfix("2", "6.2.3.1"), pathToHotfixUninstallManifest="${package}/none.xml")):
            info = self.item(hotfix)
            self.assertFalse(info["uninstallable"])
            self.assertEqual([key for key in info if "uninstall" in key], ["uninstallable"])

        named = describe(make_hotfix("3", "6.2.3.1"),
                         pathToHotfixUninstallManifest="${package}/../deploy/uninstall.hotfix.xml")
        self.assertTrue(self.item(named)["uninstallable"])

    def testEveryScriptIsCleanShell(self):
        for hotfix in (make_hotfix("1", "6.2.3.1"), make_hotfix("2", "6.2.3.2", "--name", "It's $HOME; \"x\" `id`")):
            info = self.item(hotfix)
            for name in SCRIPTS:
                Path(f"/items/{info['version']}-{name}").write_text(info[name], encoding="utf-8")
        scripts = [*Path("/items").glob("*_script"), *Path("/items/jamf").glob("*.sh")]

        self.assertEqual(len(scripts), 12)
        # That nothing is expanded in single quotes is what they are for.
        found = subprocess.run(["shellcheck", "--exclude=SC2016", "--shell=sh", "--format=gcc", *scripts], check=False,
                               stdout=subprocess.PIPE, text=True)
        self.assertEqual(found.returncode, 0, found.stdout)

    # --- The life of a hotfix --------------------------------------------------------------------

    def testMunkiInstallsUpgradesAndRemoves(self):
        first, second = self.item(make_hotfix("1", "6.2.3.1")), self.item(make_hotfix("2", "6.2.3.2"))
        for shell in SHELLS:
            with self.subTest(shell=shell):
                self._shell = shell
                self.assertEqual((self.is_needed(first), self.is_to_remove(first)), (True, False))

                status, words = self.install(first)
                self.assertEqual(status, 0, words)
                self.assertEqual(self.attribute(), "6.2.3.1")
                self.assertEqual((self.is_needed(first), self.is_to_remove(first)), (False, True))

                self.assertEqual((self.is_needed(second), self.is_to_remove(second)), (True, True))
                self.assertEqual(self.install(second)[0], 0)
                self.assertEqual(self.attribute(), "6.2.3.2")
                self.assertEqual((self.is_needed(first), self.is_needed(second)), (False, False))

                status, words = self.script(second["uninstall_script"])
                self.assertEqual(status, 0, words)
                self.assertEqual(self.attribute(), "none")
                self.assertEqual((self.is_needed(second), self.is_to_remove(second)), (True, False))
                # Whoever removes it again has nothing to do.
                self.assertEqual(self.script(second["uninstall_script"])[0], 0)

    def testJamfInstallsUpgradesAndRemoves(self):
        first, second = make_hotfix("1", "6.2.3.1"), make_hotfix("2", "6.2.3.2")
        self.item(first)
        self.item(second)
        WAITING_ROOM.mkdir(parents=True)
        shutil.copy("/items/munki/pkgs/hotfixes/QuillmereHotfix-6.2.3.2.dmg", WAITING_ROOM)
        for shell in SHELLS:
            with self.subTest(shell=shell):
                self._shell = shell
                status, words = self.policy("6.2.3.1", "install", first)
                self.assertEqual((status, self.attribute()), (0, "6.2.3.1"), words)

                self.assertEqual(self.policy("6.2.3.1"), (0, "6.2.3.1 is installed.\n"))

                # The image that Jamf has cached.
                status, words = self.policy("6.2.3.2")
                self.assertEqual((status, self.attribute()), (0, "6.2.3.2"), words)
                self.assertEqual(list(TEMPORARY.iterdir()), [])
                self.assertRegex(Path("/calls").read_text(),
                                 "hdiutil attach -quiet -nobrowse -readonly -mountpoint /items/temporary/tmp.* /Library/.*[.]dmg\n"
                                 "hdiutil detach -quiet /items/temporary/tmp.*\n$")

                status, words = self.policy("6.2.3.2", "remove")
                self.assertEqual((status, self.attribute()), (0, "none"), words)
                self.assertEqual(self.policy("6.2.3.2", "remove")[0], 1)

    def testThePolicyInstallsWhereItIsTold(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        self.item(hotfix)
        other = Path("/items/other")
        run(ROOT / "sample/make-instance", "--programs", BUILD / "sample", other)

        status, words = self.policy("6.2.3.1", "install", hotfix, other)

        self.assertEqual((status, self.attribute()), (0, "none"), words)
        self.assertEqual(self.policy("6.2.3.1", "", "", other), (0, "6.2.3.1 is installed.\n"))
        self.assertEqual(self.policy("6.2.3.1", "remove", "", other)[0], 0)

    def testThePolicyRefusesWhatItDoesNotUnderstand(self):
        self.item(make_hotfix("1", "6.2.3.1"))

        self.assertEqual(self.policy("6.2.3.1", "update"), (64, "\"update\" is neither install nor remove.\n"))
        status, words = self.policy("6.2.3.1")
        self.assertEqual(status, 1)
        self.assertIn(f"There is no hotfix in {WAITING_ROOM}/QuillmereHotfix-6.2.3.1.dmg", words)
        self.assertEqual(list(TEMPORARY.iterdir()), [])
        self.assertEqual(self.attribute(), "none")

    # --- What goes wrong -------------------------------------------------------------------------

    def testARunningApplicationEndsThemWithItsCause(self):
        hotfix, application = make_hotfix("1", "6.2.3.1"), self.start_application()
        info = self.item(hotfix)

        for status, words in (self.install(info), self.policy("6.2.3.1", "install", hotfix)):
            self.assertEqual(status, 6, words)
            self.assertIn("application is running", words)
            self.assertIn("Quit", words)
        self.assertTrue(self.is_needed(info))
        self.assertRegex(self.attribute(), "^none [(]needs attention: .*application is running")

        application.send_signal(signal.SIGKILL)
        application.wait()
        self.assertEqual(self.install(info)[0], 0)
        self.assertEqual(self.attribute(), "6.2.3.1")
        self.start_application()
        status, words = self.script(info["uninstall_script"])
        self.assertEqual(status, 5, words)
        self.assertIn("running", words)
        self.assertEqual(self.policy("6.2.3.1", "remove")[0], 5)
        self.assertEqual(self.attribute(), "6.2.3.1")

    def testAHigherHotfixEndsThemWithItsCauseAndMunkiDoesNotTry(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix)
        run(CONTROL, "install", make_hotfix("9", "6.2.3.9") / "mac/HF.pkg", "/Applications")

        self.assertFalse(self.is_needed(info))
        for status, words in (self.install(info), self.policy("6.2.3.1", "install", hotfix)):
            self.assertEqual(status, 7, words)
            self.assertIn("higher", words)
        self.assertEqual(self.attribute(), "6.2.3.9")

    def testAFailedProvisioningEndsThemAndMunkiTriesAgain(self):
        info = self.item(make_hotfix("1", "6.2.3.1", "--without-feature"))

        status, words = self.install(info)

        self.assertEqual(status, 2, words)
        self.assertIn("launcher", words)
        self.assertTrue(self.is_needed(info))
        self.assertFalse(self.is_to_remove(info))
        self.assertRegex(self.attribute(), "^none [(]needs attention: The launcher answered")

    def testWithoutTheApplicationThereIsNothingToDo(self):
        info = self.item(make_hotfix("1", "6.2.3.1"))
        shutil.rmtree(BUNDLE)

        self.assertEqual((self.is_needed(info), self.is_to_remove(info)), (False, False))
        self.assertEqual(self.attribute(), "no instance")

    def testWhereNothingCanBeToldTheInstallationTellsWhy(self):
        info = self.item(make_hotfix("1", "6.2.3.1"))
        (HOME / "installInfo.plist").write_text("no list")

        self.assertEqual((self.is_needed(info), self.is_to_remove(info)), (True, True))
        self.assertRegex(self.attribute(), "^not readable: .*installInfo.plist")
        self.assertEqual(self.script(info["uninstall_script"])[0], 4)

    def testWithoutHotfixctlMunkiBringsItFirst(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix)
        CONTROL.rename("/usr/local/bin/away")
        self.addCleanup(Path("/usr/local/bin/away").rename, CONTROL)

        self.assertEqual((self.is_needed(info), self.is_to_remove(info)), (True, False))
        self.assertEqual(self.attribute(), "hotfixctl is missing")
        status, words = self.policy("6.2.3.1", "install", hotfix)
        self.assertEqual((status, words), (1, f"{CONTROL} is missing: install the package that brings it.\n"))
        self.assertNotEqual(self.install(info)[0], 0)

    def testAHotfixctlThatCannotAnswerIsNoAnswer(self):
        info = self.item(make_hotfix("1", "6.2.3.1"), "--hotfixctl", "/items/silent")
        Path("/items/silent").write_text("#!/bin/sh\nexit 70\n")
        Path("/items/silent").chmod(0o755)

        self.assertEqual((self.is_needed(info), self.is_to_remove(info)), (True, True))
        self.assertEqual(self.attribute(), "hotfixctl gave no answer")
        Path("/items/silent").write_text("#!/bin/sh\necho 'hotfixctl: no memory' >&2\nexit 70\n")
        self.assertEqual(self.attribute(), "hotfixctl: no memory")

    def testOthersAreWaitedForAndNoInstallationTakesForEver(self):
        program = Path("/items/told")
        program.write_text("#!/bin/sh\n[ $1 = status ] || printf '[%s]' \"$@\"\n")
        program.chmod(0o755)
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix, "--hotfixctl", program)

        asked = "[install][--color][never][--wait][600][--time-limit][1800]"
        brought = SUPPORT / "QuillmereHotfix-6.2.3.1.hotfix"
        self.assertEqual(self.install(info), (0, f"{asked}[{brought}/mac/HF.pkg][/Applications]"))
        self.assertEqual(self.policy("6.2.3.1", "", hotfix), (0, f"{asked}[{hotfix}/mac/HF.pkg][/Applications]"))
        self.assertEqual(self.script(info["uninstall_script"]), (0, f"[remove][--color][never][{BUNDLE}]"))

    # --- Who the instance is for -----------------------------------------------------------------

    def testThePersonAtTheScreenGetsTheInstance(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix)
        for session, calls in (("", "launchctl print gui/1\n"),
                               ("1\n", f"launchctl print gui/1\nlaunchctl asuser 1 {CONTROL} install ")):
            Path("/sessions").write_text(session)
            Path("/console").write_text("daemon\n")
            Path("/calls").write_text("")
            run("chown", "-R", "root", HOME)
            self.assertEqual(self.install(info)[0], 0)
            self.assertEqual((HOME / "installInfo.plist").stat().st_uid, 1)
            self.assertEqual(Path("/calls").read_text()[:len(calls)], calls)

        run("chown", "-R", "root", HOME)
        status, words = self.script(info["uninstall_script"])
        self.assertEqual((status, (HOME / "installInfo.plist").stat().st_uid), (0, 1), words)

    def testAtTheLoginWindowItIsRootOrWhomJamfNames(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        info = self.item(hotfix)
        policy = Path("/items/jamf/QuillmereHotfix-6.2.3.1-policy.sh").read_text(encoding="utf-8")
        Path("/calls").write_text("")
        for nobody in ("", "root\n", "loginwindow\n", "_mbsetupuser\n"):
            Path("/console").write_text(nobody)
            run("chown", "-R", "daemon", HOME)
            Path("/calls").write_text("")
            self.assertEqual(self.install(info)[0], 0)
            self.assertEqual((HOME / "installInfo.plist").stat().st_uid, 0)
            self.assertEqual(Path("/calls").read_text(), "")

            run(CONTROL, "remove", BUNDLE)
            status, words = self.script(policy, "/", "mac-1", "daemon", "install", hotfix)
            self.assertEqual((status, (HOME / "installInfo.plist").stat().st_uid), (0, 1), words)

    # --- Hostile packages ------------------------------------------------------------------------

    def testNobodyElsesProgramsAreRun(self):
        info = self.item(make_hotfix("1", "6.2.3.1"))
        WAITING_ROOM.mkdir(parents=True)
        shutil.copy("/items/munki/pkgs/hotfixes/QuillmereHotfix-6.2.3.1.dmg", WAITING_ROOM)
        Path("/console").write_text("daemon\n")
        Path("/items/planted").mkdir()
        for name in ("stat", "id", "launchctl", "rm", "sed", "mktemp", "hdiutil", "rmdir", "hotfixctl"):
            planted = Path("/items/planted", name)
            planted.write_text("#!/bin/sh\ntouch /owned\n")
            planted.chmod(0o755)

        self.assertEqual(self.install(info)[0], 0)
        self.assertEqual(self.attribute(), "6.2.3.1")
        self.assertEqual(self.script(info["uninstall_script"])[0], 0)
        self.assertEqual(self.policy("6.2.3.1")[0], 0)
        self.assertFalse(Path("/owned").exists())

    def make_odd(self, odd):
        """An instance, a hotfix for it, and its item, with a name that a shell would take apart."""
        run(ROOT / "sample/make-instance", "--programs", BUILD / "sample", "--name", odd, "/Applications")
        hotfix = make_hotfix("odd", "6.2.3.1", "--name", odd, "--package", f"{odd}.pkg")
        info = self.item(hotfix, "--name", "Odd", "--display-name", odd)
        self.assertEqual((info["display_name"], info["blocking_applications"]), (odd, [f"{odd}.app"]))
        return hotfix, info, Path("/items/jamf/Odd-6.2.3.1-policy.sh").read_text(encoding="utf-8")

    def testNamesDoNotReachTheShell(self):
        hotfix, info, policy = self.make_odd("$(touch owned) `touch owned` & <b> * ~ ü")
        for shell in SHELLS:
            with self.subTest(shell=shell):
                self._shell = shell
                self.assertTrue(self.is_needed(info))
                status, words = self.install(info)
                self.assertEqual((status, self.attribute("Odd")), (0, "6.2.3.1"), words)
                self.assertEqual((self.is_needed(info), self.is_to_remove(info)), (False, True))
                self.assertEqual(self.script(info["uninstall_script"])[0], 0)
                status, words = self.script(policy, "/", "$(touch owned)", "", "install", hotfix)
                self.assertEqual((status, self.attribute("Odd")), (0, "6.2.3.1"), words)
                self.assertEqual(self.script(policy, "/", "", "", "remove", "$(touch owned)")[0], 0)
                self.assertEqual(self.attribute("Odd"), "none")
        self.assertFalse(Path("/owned").exists())

    def testNamesThatTheInstallerRefusesDoNotReachTheShellEither(self):
        hotfix, info, policy = self.make_odd("'; touch owned; \"; touch owned; \\")
        for shell in SHELLS:
            with self.subTest(shell=shell):
                self._shell = shell
                self.assertTrue(self.is_needed(info))
                for status, words in (self.install(info), self.script(policy, "/", "", "", "", hotfix)):
                    self.assertEqual(status, 3, words)
                    self.assertIn("unsupported character", words)
                self.assertEqual(self.script(policy, "/", "", "", "'; touch owned")[0], 64)
                self.assertRegex(self.attribute("Odd"), "^none")
        self.assertFalse(Path("/owned").exists())

    def testTheNameIsMadeOfWhatIsPlainInTheApplications(self):
        info = self.item(make_hotfix("1", "6.2.3.1", "--name", "Bob's 2nd; App"))

        self.assertEqual(info["name"], "Bobs2ndAppHotfix")

    def testVersionsAndNamesThatArePartOfOthersArePlain(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        for version in ("'; rm -rf /", "1 2", "1/2", "..", "1\n2", "-1", "", "1\x00", "٣"):
            with self.subTest(version=version):
                if "\x00" not in version:
                    self.assertIn("version", self.refused(describe(hotfix, version=version)))
        self.assertIn("version", self.refused(describe(hotfix, version=None)))
        self.assertIn("version", self.refused(describe(hotfix, version=6)))
        describe(hotfix, version="6.2.3.1")
        for name in ("a b", "../x", "$x", "-x"):
            self.assertIn("name", self.refused(hotfix, f"--name={name}"))

    def testWhatCannotBeWrittenOrIsNoPackageIsRefused(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        for name in (None, "", "a/b", "a\nb", "a\u202eb", 7):
            self.assertIn("name", self.refused(describe(hotfix, bundleName=name)))
        describe(hotfix, bundleName="Quillmere")
        self.assertIn("name", self.refused(describe(make_hotfix("2", "6.2.3.1"), bundleName="№")))
        for option in ("--destination", "--hotfixctl"):
            self.assertIn("not absolute", self.refused(hotfix, option, "Applications"))

        self.assertIn("holds 0", self.refused("/missing"))
        self.assertIn("holds 0", self.refused(hotfix / "mac/HF.pkg"))
        run("cp", "-R", hotfix / "mac/HF.pkg", hotfix / "Other.pkg")
        self.assertIn("holds 2", self.refused(hotfix))
        shutil.rmtree(hotfix / "Other.pkg")
        (hotfix / "mac/HF.pkg").rename(hotfix / os.fsdecode(b"mac/\xff.pkg"))
        self.assertIn("path", self.refused(hotfix))

    def testADamagedDescriptionIsRefused(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        path = hotfix / "mac/HF.pkg/Contents/Resources/hotfix.plist"
        for damaged in (b"", b"no list", b"<plist><dict>", b"bplist00", plistlib.dumps(["list"])):
            path.write_bytes(damaged)
            self.assertIn("version" if b"array" in damaged else "cannot be read", self.refused(hotfix))

    def testABinaryDescriptionIsRead(self):
        hotfix = make_hotfix("1", "6.2.3.1")
        path = hotfix / "mac/HF.pkg/Contents/Resources/hotfix.plist"
        path.write_bytes(plistlib.dumps(plistlib.loads(path.read_bytes()), fmt=plistlib.FMT_BINARY))

        self.assertEqual(self.item(hotfix)["version"], "6.2.3.1")

    def testTheAttributeIsOneElementWhateverIsRecorded(self):
        self.item(make_hotfix("1", "6.2.3.1"))
        self.record(hotfixVersion="</result>&<x>\n$(touch owned)", installedHotfixBundleID="x")

        self.assertEqual(self.attribute(), "&lt;/result&gt;&amp;&lt;x&gt;\\n$(touch owned)")
        self.assertFalse(Path("/owned").exists())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
