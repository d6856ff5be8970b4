// Cases of settings.

#include "ctl/lint/LintCases.h"

namespace installer::ctl::lint::test {

namespace {

using World = LintWorld;

}  // namespace

std::vector<LintCase> settingsCases() {
  return {
      {"HF401", "",
       [](World& w) {
         w.settings(
             std::string_view("\xFF\xFEk\0=\0"
                              "1\0\n\0",
                              10));
       }},
      {"HF401", "WithoutAMark",
       [](World& w) {
         w.settings(
             std::string_view("k\0=\0"
                              "1\0",
                              6));
       }},
      {"HF402", "", [](World& w) { w.settings("\xEF\xBB\xBFk=1\nj=2\n"); }},
      {"HF403", "", [](World& w) { w.settings("j=2\nk=gr\xC3\xBC\xC3\x9F\n"); },
       [](World& w) { w.settings("k=gr\xFC\xDF\n"); }},
      {"HF403", "BelowAComment", [](World& w) { w.settings("# gr\xFC\xDF\nk=\xC3\xA0\n"); },
       [](World& w) { w.settings("# gr\xC3\xBC\xC3\x9F\nk=1\n"); }},
      {"HF404", "", [](World& w) { w.settings("word\n"); },
       [](World& w) { w.settings("word=\n"); }},
      {"HF405", "", [](World& w) { w.settings("k=1\nj=2\nk:3\n"); },
       [](World& w) { w.settings("k=1\nK=2\n#k=3\n"); }},
      {"HF406", "", [](World& w) { w.settings("k=one, \\\n  two\nj=2\n"); },
       [](World& w) { w.settings("#k=one, \\\nj=2\n"); }},
      {"HF407", "", [](World& w) { w.settings("k=one,\\\nj=2\n"); },
       [](World& w) { w.settings("k=c:\\\\\nj=2\n"); }},
      {"HF408", "", [](World& w) { w.settings("  # said\nk=1\n"); }},
      {"HF409", "", [](World& w) { w.settings("! said\nk=1\n"); },
       [](World& w) { w.settings("k=!\n"); }},
      {"HF410", "", [](World& w) { w.settings("k\\:b=c\n"); },
       [](World& w) { w.settings("k=b\\:c\n"); }},
      {"HF410", "BehindABackslash", [](World& w) { w.settings("z\\\\=b\n"); },
       [](World& w) { w.settings("z\\\\b=c\n"); }},
      {"HF410", "OfALetter", [](World& w) { w.settings("k\\u00e9=1\n"); },
       [](World& w) { w.settings("k\xE9=1\n"); }},
      {"HF411", "", [](World& w) { w.settings("k=one\\ntwo\n"); },
       [](World& w) { w.settings("k=one\\u000atwo c:\\\\new \\# \\! \\=\n"); }},
      {"HF411", "OfBackslashes", [](World& w) { w.settings("share=\\\\\\\\srv\\\\x\n"); },
       [](World& w) { w.settings("share=\\u005c\\u005csrv\\\\x\\u0009\\u0041\n"); }},
      {"HF411", "OfAColon", [](World& w) { w.settings("port=\\:80\n"); },
       [](World& w) { w.settings("port = \\u003a80\n"); }},
      {"HF411", "OfABlank", [](World& w) { w.settings("k=\\ x\n"); },
       [](World& w) { w.settings("k=x\\ \\ y\n"); }},
      {"HF411", "OfASecondSeparator", [](World& w) { w.settings("k==x\n"); },
       [](World& w) { w.settings("k : x=y\n"); }},
      {"HF411", "OfAFormFeed", [](World& w) { w.settings("k=a\\fb\\tc\\rd\n"); },
       [](World& w) { w.settings("k=a\fb\tc\n"); }},
      {"HF412", "", [](World& w) { w.settings("k=1\n=2\n"); }},
      {"HF413", "", [](World& w) { w.settings("k=1\rj=2\r"); },
       [](World& w) { w.settings("k=1\r\nj=2\r\n"); }},
      {"HF414", "", [](World& w) { w.settings("# nothing\n\n"); }},
      {"HF414", "Empty", [](World& w) { w.settings(""); }},
      {"HF415", "",
       [](World& w) {
         w.resize(World::deploy("plugin_customization.ini"), (std::size_t{64} << 20) + 1);
       }},
      {"HF416", "", [](World& w) { w.settings("-Xmx=1\n"); },
       [](World& w) { w.settings("k=-Xmx\n"); }},
      {"HF417", "", [](World& w) { w.settings("home=c:\\\\users\n"); },
       [](World& w) { w.settings("home=c:\\u005cusers\n"); }},
      {"HF417", "AsItStands", [](World& w) { w.settings("home=c:\\users\n"); },
       [](World& w) { w.settings("home=\\uABcd\n"); }},
      {"HF417", "WithThreeDigits", [](World& w) { w.settings("k=\\u12e\n"); },
       [](World& w) { w.settings("k=\\u12e4\n"); }},
      {"HF417", "InAKey", [](World& w) { w.settings("k\\u12=1\n"); }},
  };
}

}  // namespace installer::ctl::lint::test
