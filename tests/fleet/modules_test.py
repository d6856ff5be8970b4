"""What the modules make of hotfixctl's answers. To be run where the collection is installed."""

import os
import tempfile
import unittest
from unittest import mock

from ansible_collections.kiv.hotfix.plugins.modules import hotfix


class Ended(Exception):
    """What ends a module, with its outcome."""


class Module:
    check_mode = False
    _diff = False

    def __init__(self, **parameters):
        self.params = {"package": "/p/HF.pkg", "destination": "/Applications", "bundle": "/Applications/Q.app",
                       "rcpdata": None, "user": None, "force": False, "lint": False, "wait": 0,
                       "time_limit": None, **parameters}

    def exit_json(self, **outcome):
        raise Ended({"failed": False, **outcome})

    def fail_json(self, **outcome):
        raise Ended({"failed": True, **outcome})


class Companion:
    """Answers from a list, and keeps what it was asked."""

    def __init__(self, *answers):
        self._answers, self.asked = list(answers), []

    def ask(self, command, *arguments, **variables):
        self.asked.append((command, arguments, variables))
        return self._answers.pop(0)


def plan(package="2", before="1", code=0, home="/nowhere"):
    return {"status": 1 if code else 0, "versions": {"package": package, "before": before, "after": package},
            "instance": {"rcpHome": home}, "error": {"code": code, "cause": "running", "meaning": "it runs.", "remedy": "Quit it."}, "changes": ["many"], "log": ["long"],
            "output": "long", "children": []}


def outcome_of(function, module, companion):
    try:
        function(module, companion)
    except Ended as ended:
        return ended.args[0]
    raise AssertionError("it did not end")


class InstallTest(unittest.TestCase):
    def testRecordedVersionIsNotDue(self):
        outcome = outcome_of(hotfix.install, Module(), Companion(plan(before="2")))

        self.assertEqual((outcome["failed"], outcome["changed"], outcome["due"]), (False, False, False))

    def testPackageWithoutVersionIsAlwaysDue(self):
        module = Module()
        module.check_mode = True

        outcome = outcome_of(hotfix.install, module, Companion(plan(package=None, before=None)))

        self.assertEqual((outcome["failed"], outcome["changed"]), (False, True))

    def testAnswerOfAPlanIsShort(self):
        outcome = outcome_of(hotfix.install, Module(), Companion(plan(before="2")))

        self.assertEqual({"changes", "log", "output"} & set(outcome["answer"]), set())
        self.assertEqual(outcome["answer"]["error"]["code"], 0)

    def testRefusalIsForeseenWithItsReason(self):
        module = Module()
        module.check_mode = True

        outcome = outcome_of(hotfix.install, module, Companion(plan(code=6)))

        self.assertEqual((outcome["failed"], outcome["changed"], outcome["msg"], outcome["cause"]),
                         (True, False, "it runs. Quit it.", "running"))

    def testInstanceStaysItsOwners(self):
        with tempfile.TemporaryDirectory() as home:
            os.mkdir(f"{home}/deploy")
            companion = Companion(plan(home=home), plan(before="2", home=home))
            with mock.patch.object(hotfix.os, "stat", return_value=mock.Mock(st_uid=7)), \
                    mock.patch.object(hotfix.pwd, "getpwuid", return_value=mock.Mock(pw_name="alice")):
                outcome_of(hotfix.install, Module(), companion)
        self.assertEqual([variables for _, _, variables in companion.asked], [{}, {"USER": "alice"}])

    def testWhoIsGivenHasIt(self):
        companion = Companion(plan(before="2"))

        outcome_of(hotfix.install, Module(user="bob"), companion)

        self.assertEqual([variables for _, _, variables in companion.asked], [{"USER": "bob"}])


class RemoveTest(unittest.TestCase):
    @staticmethod
    def status(state, version):
        return {"instances": [{"state": state, "hotfix": {"version": version} if version else None}]}

    def foreseen(self, state, version, force):
        module = Module(force=force)
        module.check_mode = True
        return outcome_of(hotfix.remove, module, Companion(self.status(state, version)))["changed"]

    def testForeseesOnlyWhatThereIs(self):
        self.assertTrue(self.foreseen("hotfix-installed", "2", False))
        self.assertFalse(self.foreseen("no-hotfix", None, False))
        self.assertFalse(self.foreseen("no-hotfix", None, True))
        self.assertTrue(self.foreseen("needs-attention", None, True))


if __name__ == "__main__":
    unittest.main()
