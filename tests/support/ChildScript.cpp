#include "support/ChildScript.h"

#include <sstream>

#include "children/PercentCoding.h"

namespace installer::test {

ChildScript& ChildScript::add(std::string_view step, std::string_view first,
                              std::string_view second) {
  _text += std::string(step) + "\t" + percentEncoded(first) + "\t" + percentEncoded(second) + "\n";
  return *this;
}

ChildScript& ChildScript::snapshot(const std::string& path) {
  return add("snapshot", path);
}
ChildScript& ChildScript::input() {
  return add("input", "");
}
ChildScript& ChildScript::write(const std::string& path, std::string_view bytes) {
  return add("write", path, bytes);
}
ChildScript& ChildScript::remove(const std::string& path) {
  return add("remove", path);
}
ChildScript& ChildScript::folder(const std::string& path) {
  return add("folder", path);
}
ChildScript& ChildScript::rename(const std::string& from, const std::string& to) {
  return add("rename", from, to);
}
ChildScript& ChildScript::link(const std::string& path, const std::string& target) {
  return add("link", path, target);
}
ChildScript& ChildScript::print(std::string_view text) {
  return add("print", text);
}
ChildScript& ChildScript::printError(std::string_view text) {
  return add("error", text);
}
ChildScript& ChildScript::await(const std::string& path) {
  return add("await", path);
}
ChildScript& ChildScript::signalParent(int signal) {
  return add("signal-parent", std::to_string(signal), "1");
}
ChildScript& ChildScript::exit(int status) {
  return add("exit", std::to_string(status));
}
ChildScript& ChildScript::kill(int signal) {
  return add("kill", std::to_string(signal));
}

namespace {

void addVariable(ChildRecord& record, const std::string& text) {
  const std::size_t equals = text.find('=');
  record.environment[text.substr(0, equals)] =
      equals == std::string::npos ? std::string() : text.substr(equals + 1);
}

void addField(ChildRecord& record, const std::string& key, const std::string& first,
              const std::string& second) {
  if (key == "role") record.role = first;
  if (key == "path") record.executable = first;
  if (key == "argument") record.arguments.push_back(first);
  if (key == "directory") record.directory = first;
  if (key == "variable") addVariable(record, first);
  if (key == "descriptor") record.descriptors[std::stoi(first)] = second;
  if (key == "ignored") record.ignoredSignals.push_back(std::stoi(first));
  if (key == "blocked") record.blockedSignals.push_back(std::stoi(first));
  if (key == "mask") record.mask = static_cast<unsigned>(std::stoul(first));
  if (key == "user") record.user = static_cast<unsigned>(std::stoul(first));
  if (key == "input") record.input = first;
  if (key == "snapshot") record.snapshots[first] = second;
}

}  // namespace

ChildRecord ChildRecord::parse(const std::string& text) {
  ChildRecord record;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream parts(line);
    std::string fields[3];
    for (std::string& field : fields) {
      std::getline(parts, field, '\t');
      field = percentDecoded(field);
    }
    addField(record, fields[0], fields[1], fields[2]);
  }
  return record;
}

std::optional<std::string> ChildRecord::fileAt(const std::string& path) const {
  const auto found = snapshots.find(path);
  if (found == snapshots.end() || found->second[0] != 'F') return std::nullopt;
  return found->second.substr(1);
}

}  // namespace installer::test
