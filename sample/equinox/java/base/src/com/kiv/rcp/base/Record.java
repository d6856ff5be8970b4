package com.kiv.rcp.base;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;
import java.util.Properties;

/**
 * What the last successful run worked from. The stamp alone does not tell manifests apart: two of
 * the same minute carry the same one, hence the digest beside it.
 *
 * @param collect a feature was taken out, and its plug-in waits for the next start to be deleted
 */
record Record(String stamp, String digest, boolean collect) {
  static Record last() throws IOException {
    Properties saved = Instance.load(Instance.provisioningRecord());
    return new Record(
        saved.getProperty("stamp", ""),
        saved.getProperty("digest", ""),
        Boolean.parseBoolean(saved.getProperty("collect")));
  }

  static Record of(Path manifest) throws IOException {
    String stamp =
        Instance.launcherProperties().getProperty("provisioning.manifest.version", "");
    return new Record(stamp, sha256(Files.readAllBytes(manifest)), false);
  }

  static void forget() throws IOException {
    Files.deleteIfExists(Instance.provisioningRecord());
  }

  boolean sameWork(Record other) {
    return stamp.equals(other.stamp) && digest.equals(other.digest);
  }

  Record withCollect(boolean wanted) {
    return new Record(stamp, digest, wanted);
  }

  void save() throws IOException {
    Properties properties = new Properties();
    properties.setProperty("stamp", stamp);
    properties.setProperty("digest", digest);
    properties.setProperty("collect", Boolean.toString(collect));
    Files.createDirectories(Instance.provisioningRecord().getParent());
    try (OutputStream out = Files.newOutputStream(Instance.provisioningRecord())) {
      properties.store(out, null);
    }
  }

  private static String sha256(byte[] content) {
    try {
      return HexFormat.of().formatHex(MessageDigest.getInstance("SHA-256").digest(content));
    } catch (NoSuchAlgorithmException impossible) {
      throw new IllegalStateException(impossible);
    }
  }
}
