package com.kiv.rcp.base;

import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Properties;

/** Where this instance keeps its files; the launcher tells the rcp home. */
final class Instance {
  private Instance() {}

  static Path rcpHome() {
    return Path.of(System.getProperty("rcp.home.folder"));
  }

  /** The workspace. The framework gives it as a location in which nothing is escaped. */
  static Path data() {
    return Path.of(System.getProperty("osgi.instance.area").replaceFirst("^file:", ""));
  }

  static Path installManifest() {
    return rcpHome().resolve("deploy/install.xml");
  }

  static Path updateManifest() {
    return rcpHome().resolve("deploy/install.update.xml");
  }

  /** What the last successful provisioning run has left for the next one. */
  static Path provisioningRecord() {
    return rcpHome().resolve("eclipse/configuration/com.kiv.rcp.base/provisioning.properties");
  }

  static Properties launcherProperties() throws IOException {
    return load(rcpHome().resolve("rcplauncher.properties"));
  }

  /** Empty when there is no such file. */
  static Properties load(Path file) throws IOException {
    Properties properties = new Properties();
    if (!Files.isRegularFile(file)) return properties;
    try (InputStream in = Files.newInputStream(file)) {
      properties.load(in);
    }
    return properties;
  }
}
