"""The faults that scripts/mutants makes are the ones that it is there for."""

import importlib.machinery
import importlib.util
import platform
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
loader = importlib.machinery.SourceFileLoader("mutants", str(ROOT / "scripts" / "mutants"))
mutants = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutants", loader))
loader.exec_module(mutants)


class MutantsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        original = mutants.ORIGINAL
        self.addCleanup(setattr, mutants, "ORIGINAL", original)
        mutants.ORIGINAL = self._root

    def faults(self, text, kind, inFunction=True):
        """The texts that the faults of one kind make of the text, which stands in a function."""
        before, after = ("void f() {\n", "\n}\n") if inFunction else ("", "")
        path = self._root / "A.cpp"
        path.write_text(before + text + after, encoding="utf-8")
        whole = before + text + after
        broken = [whole[:fault.start] + fault.text + whole[fault.end:]
                  for fault in mutants.faultsIn(path) if fault.kind == kind]
        return [one[len(before):len(one) - len(after)] for one in broken]

    def testConditionsAreNegated(self):
        kind = "condition negated"
        self.assertEqual(self.faults("if (a(1) && b) c();", kind), ["if (!(a(1) && b)) c();"])
        self.assertEqual(self.faults("while (a) c();", kind), ["while (!(a)) c();"])
        self.assertEqual(self.faults("if (int a = b(); a > 1) c();", kind),
                         ["if (int a = b();!(a > 1)) c();"])
        self.assertEqual(self.faults("x = a ? b : c;", kind), ["x = !(a) ? b : c;"])

    def testConditionsThatDeclareAreLeftAlone(self):
        self.assertEqual(self.faults("if (auto a = b()) c();", "condition negated"), [])

    def testComparisonsAreShifted(self):
        for before, after in (("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="),
                              ("!=", "==")):
            self.assertEqual(self.faults(f"x = a {before} b;", "comparison shifted"),
                             [f"x = a {after} b;"])

    def testTemplatesShiftsAndReferencesAreNoComparisons(self):
        text = "std::vector<int> a(std::move(b)); auto&& c = d << 2;"
        self.assertEqual(self.faults(text, "comparison shifted"), [])
        self.assertEqual(self.faults(text, "and and or exchanged"), [])

    def testAndAndOrAreExchanged(self):
        self.assertEqual(self.faults("x = a && b || c;", "and and or exchanged"),
                         ["x = a || b || c;", "x = a && b && c;"])

    def testNegationsAreRemoved(self):
        self.assertEqual(self.faults("x = !a != !(b);", "negation removed"),
                         ["x = a != !(b);", "x = !a != (b);"])

    def testConstantsAreChanged(self):
        self.assertEqual(self.faults("x = 9; y = 0x10; z = 1'000; w = 010;", "number changed"),
                         ["x = 10; y = 0x10; z = 1'000; w = 010;",
                          "x = 9; y = 17; z = 1'000; w = 010;",
                          "x = 9; y = 0x10; z = 1001; w = 010;",
                          "x = 9; y = 0x10; z = 1'000; w = 9;"])
        self.assertEqual(self.faults(r'x = "a\"b"; y = "";', "text changed"),
                         [r'x = "a\"bx"; y = "";', r'x = "a\"b"; y = "x";'])
        self.assertEqual(self.faults(r"x = '\''; y = u'x';", "character changed"),
                         ["x = 'x'; y = u'x';", r"x = '\''; y = 'x';"])
        self.assertEqual(self.faults("return true;", "answer changed"), ["return false;"])
        self.assertEqual(self.faults("return false;", "answer changed"), ["return true;"])

    def testStatementsAreRemoved(self):
        for statement in ("call(1);", "a.b()->c(d, e);", "x = 1;", "a.b += c;", "++x;", "x--;",
                          "(void)call();", "break;", "a[1] = 2;", "call<int>(x);"):
            with self.subTest(statement=statement):
                self.assertEqual(self.faults(statement, "statement removed"), ["{}"])

    def testStatementsBehindControlAreRemovedAlone(self):
        self.assertEqual(self.faults("if (a) b();", "statement removed"), ["if (a) {}"])
        self.assertEqual(self.faults("for (a(); b; ++c) d();", "statement removed"),
                         ["for (a(); b; ++c) {}"])
        self.assertEqual(self.faults("if (a)\n  b();\nelse\n  c();", "statement removed"),
                         ["if (a)\n  {}\nelse\n  c();", "if (a)\n  b();\nelse\n  {}"])

    def testDeclarationsAndAnswersStay(self):
        for statement in ("int x = 1;", "const auto y = f();", "T z(1);", "return x;",
                          "using A = B;", "std::string s{1};"):
            with self.subTest(statement=statement):
                self.assertEqual(self.faults(statement, "statement removed"), [])

    def testWhatIsOutsideOfFunctionsStays(self):
        text = "namespace a {\nint f();\nstruct B {\n  int c();\n  int d = 1;\n};\n}\n"
        self.assertEqual(self.faults(text, "statement removed", inFunction=False), [])

    def testStatementsOfLambdasAreRemoved(self):
        self.assertEqual(self.faults("a([&](int b) { c(b); });", "statement removed"),
                         ["{}", "a([&](int b) { {} });"])

    def testCommentsIncludesAndTextsHoldNoCode(self):
        text = '// if (a) b(1 < 2);\n/* c(!d); */\n#include "e.h"\nx = "f(1 && !2);";\n'
        for kind in ("condition negated", "comparison shifted", "and and or exchanged",
                     "negation removed", "number changed", "answer changed"):
            self.assertEqual(self.faults(text, kind), [], kind)
        self.assertEqual(len(self.faults(text, "text changed")), 1)

    def testSourcesOfOtherSystemsAreLeftAlone(self):
        (self._root / "cmake").mkdir()
        (self._root / "cmake" / "System.cmake").write_text(
            f"set(HOTFIX_SYSTEM_{platform.system()} here)\nset(HOTFIX_SYSTEM_Elsewhere there)\n")
        for folder in ("files", "here", "there"):
            path = self._root / "src" / "platform" / folder / "A.cpp"
            path.parent.mkdir(parents=True)
            path.write_text("bool f() {\n  return true;\n}\n")

        self.assertEqual({fault.file for fault in mutants.allFaults([])},
                         {"src/platform/files/A.cpp", "src/platform/here/A.cpp"})

    def testTreesAreCopiedAndWhatIsTheSameKeepsItsTime(self):
        source, target = self._root / "source", self._root / "target"
        (source / "a").mkdir(parents=True)
        for name in ("same", "changed", "new"):
            (source / "a" / name).write_text(name)
        (target / "a").mkdir(parents=True)
        (target / "a" / "same").write_text("same")
        (target / "a" / "changed").write_text("before")
        (target / "a" / "old").write_text("old")
        before = (target / "a" / "same").stat().st_mtime_ns

        mutants.copyTree(source, target)

        self.assertEqual({item.name: item.read_text() for item in (target / "a").iterdir()},
                         {"same": "same", "changed": "changed", "new": "new"})
        self.assertEqual((target / "a" / "same").stat().st_mtime_ns, before)


if __name__ == "__main__":
    unittest.main()
