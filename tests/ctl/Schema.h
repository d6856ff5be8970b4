#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "support/Judge.h"
#include "support/TemporaryFolder.h"

namespace installer::ctl::test {

// The answer as a reader of its own understands it, judged by the schema of that name that is
// installed with the program. An answer that the schema refuses fails the test.
inline nlohmann::json judged(const std::string& answer, const std::string& schema) {
  const installer::test::TemporaryFolder folder;
  folder.makeFile("answer.json", answer);
  const std::string file = HOTFIX_SOURCE_DIR "/src/ctl/schema/" + schema + ".schema.json";
  const auto verdict =
      installer::test::askJudge(folder.path(),
                                "python3 -c 'import json, jsonschema, sys\n"
                                "schema = json.load(open(sys.argv[1], encoding=\"utf-8\"))\n"
                                "jsonschema.Draft7Validator.check_schema(schema)\n"
                                "answer = json.load(open(\"answer.json\", encoding=\"utf-8\"))\n"
                                "jsonschema.Draft7Validator(schema).validate(answer)' " +
                                    file);
  EXPECT_EQ(0, verdict.status) << verdict.output << answer;
  return nlohmann::json::parse(answer, nullptr, false);
}

}  // namespace installer::ctl::test
