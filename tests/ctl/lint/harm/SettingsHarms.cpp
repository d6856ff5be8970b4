// What comes of cases of settings.

#include "ctl/lint/harm/HarmTest.h"

namespace installer::cli {

std::vector<Harm> settingsHarms() {
  return {
      {"HF401", settingsAre("\\u00ff\\u00fek\\u0000=\\u00001\\u0000\n\\u0000=\n")},
      {"HF402", settingsAre("\\u00ef\\u00bb\\u00bfk=1\nj=2\n")},
      {"HF403", settingsAre("j=2\nk=gr\\u00c3\\u00bc\\u00c3\\u009f\n")},
      {"HF403BelowAComment", settingsAre("k=\\u00c3\n")},
      {"HF404", settingsAre("word=\n")},
      {"HF405", settingsAre("k=3\nj=2\n")},
      {"HF406", settingsAre("j=2\n")},
      {"HF407", settingsAre("k=one,\\\\\nj=2\n")},
      {"HF409", settingsAre("\\!=said\nk=1\n")},
      {"HF410", settingsAre("k=b\\=c\n")},
      {"HF410BehindABackslash", settingsAre("z=b\n")},
      {"HF410OfALetter", settingsAre("k\\\\u00e9=1\n")},
      {"HF411", settingsAre("k=one\\\\ntwo\n")},
      {"HF411OfBackslashes", settingsAre("share=\\\\srv\\\\x\n")},
      {"HF411OfAColon", settingsAre("port=80\n")},
      {"HF411OfABlank", settingsAre("k=x\n")},
      {"HF411OfASecondSeparator", settingsAre("k=x\n")},
      {"HF412", settingsAre("k=1\n")},
      {"HF413", settingsAre("k=1\\u000dj\\=2\n")},
      {"HF415", kSettingsNotMerged},
      {"HF416", settingsAre("-Xmx=\\=1\n")},
      {"HF417", settingsAre("home=c\\:\\users\n")},
  };
}

}  // namespace installer::cli
