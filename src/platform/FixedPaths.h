#pragma once

#include <string>

namespace installer {

// Every absolute path that the program knows by itself, with who writes it and who reads it.
struct FixedPaths {
  // Written by us, truncated by every run; read by the log collection tool and by people.
  std::string traceFile = "/tmp/install_trace.log";
  // Written by us when a check fails; its existence is read by the graphical installer.
  std::string errorMarker = "/tmp/quillmere.hotfix.error";
  // Stands in for the pasteboard of that name; written by us, read by the graphical installer.
  std::string pasteboard = "/tmp/INSTALLATION_INTERNAL_PASTEBOARD";
  // Written by us and by other installers' steps, read by both.
  std::string internalConfiguration = "/tmp/com.kiv.rcp.platform.internal.configuration";
  // Written by nobody here; only ever removed by us.
  std::string staleResultPanel = "/tmp/qlm.config";
  // Filled by other installers; copied by us to the location that the configuration names.
  std::string stagingFolder = "/tmp/qlmcore2/";
  // The folder of the log files that add-on installers write.
  std::string addonLogFolder = "/tmp";
  // One folder per product, each with the registration file that product installers write.
  std::string registrations = "/Library/Application Support/Velna";
  // The instance that manifest and launcher steps fall back to when none is known.
  std::string fallbackRcpHome = "/Applications/Quillmere.app/Contents/MacOS/rcp";
  // The system's own.
  std::string javaAppletPlugin = "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin/";
  std::string javaHomeTool = "/usr/libexec/java_home";
  std::string receiptTool = "/usr/sbin/pkgutil";
  std::string volumes = "/Volumes";

  // Calls visit(field's name, path) for every path of `paths`, const or not, in this order. The
  // binding names every field: a new one does not compile until it is visited.
  template <class Paths, class Visit>
  static void each(Paths& paths, Visit visit) {
    auto& [trace, marker, record, configuration, panel, staging, addonLogs, products, fallback,
           applet, javaHome, receipts, disks] = paths;
    visit("traceFile", trace);
    visit("errorMarker", marker);
    visit("pasteboard", record);
    visit("internalConfiguration", configuration);
    visit("staleResultPanel", panel);
    visit("stagingFolder", staging);
    visit("addonLogFolder", addonLogs);
    visit("registrations", products);
    visit("fallbackRcpHome", fallback);
    visit("javaAppletPlugin", applet);
    visit("javaHomeTool", javaHome);
    visit("receiptTool", receipts);
    visit("volumes", disks);
  }
};

}  // namespace installer
