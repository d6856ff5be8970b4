#include "ProvisioningRun.h"

#include "FeatureStore.h"
#include "Files.h"
#include "Manifest.h"

namespace sample {

namespace fs = std::filesystem;

namespace {

const char* const kInstallManifest = "deploy/install.xml";
const char* const kUpdateManifest = "deploy/install.update.xml";
const char* const kLauncherProperties = "rcplauncher.properties";
const char* const kStampKey = "provisioning.manifest.version";
const char* const kRecord = "eclipse/configuration/com.kiv.rcp.base/provisioning.properties";
const char* const kRecordedStamp = "manifest.version";
const char* const kRecordedDigest = "manifest.digest";

}  // namespace

ProvisioningRun::ProvisioningRun(const fs::path& rcpHome)
    : _rcpHome(rcpHome), _log(rcpHome / "launcher.log") {}

ResultCode ProvisioningRun::perform(const LaunchVector& launch) const {
  const bool isUpdate = launch.operation == Operation::kUpdate;
  _log.write(std::string(isUpdate ? "update" : "cleanup") + ", locale " + launch.locale +
             ", data " + launch.rcpData.value_or("not given"));
  const ResultCode code = isUpdate ? update(launch) : cleanUp();
  _log.write("rc=" + std::to_string(static_cast<int>(code)));
  return code;
}

ResultCode ProvisioningRun::refuse(int argumentCount) const {
  _log.write("not a provisioning start (" + std::to_string(argumentCount) + " arguments), rc=1");
  return ResultCode::kUnusable;
}

bool ProvisioningRun::leaveResult(ResultCode code) const {
  return writeFile(_rcpHome.parent_path() / ".provisioning_rc",
                   "rc=" + std::to_string(static_cast<int>(code)) + "\n");
}

ResultCode ProvisioningRun::update(const LaunchVector& launch) const {
  const fs::path manifest = manifestInForce();
  const auto requests = readManifest(manifest);
  if (!requests) {
    _log.write("the manifest " + manifest.string() + " is unusable");
    return ResultCode::kUnusable;
  }
  const std::string stamp = readProperty(_rcpHome / kLauncherProperties, kStampKey).value_or("");
  const std::string digest = digestOf(readFile(manifest).value_or(""));
  if (!isNew(stamp, digest)) return ResultCode::kNothingNew;

  _log.write("manifest " + manifest.filename().string() + ", version " + stamp);
  if (!FeatureStore(_rcpHome / "eclipse", _log).carryOut(*requests, launch.siteOverride)) {
    return ResultCode::kProvisioningFailed;
  }
  const fs::path installed = _rcpHome / kInstallManifest;
  if (manifest != installed && !carryOver(installed, *requests)) {
    _log.write("the features could not be carried over into " + installed.string());
  }
  remember(stamp, digest);
  return ResultCode::kDone;
}

// The update that follows finds no record and checks the instance's own manifest again.
ResultCode ProvisioningRun::cleanUp() const {
  std::error_code error;
  fs::remove(_rcpHome / kUpdateManifest, error);
  fs::remove(_rcpHome / kRecord, error);
  FeatureStore(_rcpHome / "eclipse", _log).discardStaged();
  return ResultCode::kDone;
}

fs::path ProvisioningRun::manifestInForce() const {
  std::error_code error;
  const fs::path update = _rcpHome / kUpdateManifest;
  return fs::exists(update, error) ? update : _rcpHome / kInstallManifest;
}

// Stamps are made once a minute: two manifests of one installer run mostly carry the same one, and
// only their contents tell them apart.
bool ProvisioningRun::isNew(const std::string& stamp, const std::string& digest) const {
  const fs::path record = _rcpHome / kRecord;
  return readProperty(record, kRecordedStamp) != stamp ||
         readProperty(record, kRecordedDigest) != digest;
}

void ProvisioningRun::remember(const std::string& stamp, const std::string& digest) const {
  const fs::path record = _rcpHome / kRecord;
  std::error_code error;
  fs::create_directories(record.parent_path(), error);
  const std::string content =
      std::string(kRecordedStamp) + "=" + stamp + "\n" + kRecordedDigest + "=" + digest + "\n";
  if (!writeFile(record, content)) _log.write("could not write " + record.string());
}

}  // namespace sample
