package com.kiv.rcp.base;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.eclipse.equinox.app.IApplication;
import org.eclipse.equinox.app.IApplicationContext;

/**
 * A provisioning run: brings the profile to what the manifest in {@code deploy} asks for, by way of
 * the p2 director, or cleans up. Its exit code is the run's result.
 */
public final class Provisioning implements IApplication {
  private static final Integer DONE = 0;
  private static final Integer UNUSABLE = 1; // the manifest, or what was asked for
  private static final Integer NOTHING_NEW = 2;
  private static final Integer DISAGREES = 14; // the director was content, the profile is not so

  @Override
  public Object start(IApplicationContext context) throws Exception {
    String[] arguments = (String[]) context.getArguments().get(IApplicationContext.APPLICATION_ARGS);
    String operation = Arguments.valueOf("-provisioningOperation", arguments).orElse("");
    return switch (operation) {
      case "update" -> update();
      case "cleanup" -> cleanUp();
      default -> unusable("no such operation: " + operation);
    };
  }

  @Override
  public void stop() {}

  private static Integer update() throws Exception {
    Path manifest = manifest();
    if (!Files.isRegularFile(manifest)) return unusable("no manifest: " + manifest);
    Record last = Record.last();
    if (last.collect()) Platform.collectGarbage();
    Record work = Record.of(manifest);
    if (work.sameWork(last)) {
      work.save();
      say("nothing new in " + manifest);
      return NOTHING_NEW;
    }
    try {
      return install(manifest, work);
    } catch (IOException bad) {
      return unusable(bad.getMessage());
    }
  }

  private static Integer install(Path manifest, Record work) throws Exception {
    List<Feature> features = FeatureManifest.read(manifest).features();
    List<String> changes = changes(features);
    if (!changes.isEmpty()) {
      int code = direct(changes, features);
      if (code != 0) return code;
    }
    if (!InstalledFeatures.agreeWith(features)) return DISAGREES;
    if (!manifest.equals(Instance.installManifest())) carryOver(features);
    work.withCollect(changes.contains("-uninstallIU")).save();
    say("done: " + manifest);
    return DONE;
  }

  /** The next update run works from the instance's own manifest, against the profile. */
  private static Integer cleanUp() throws Exception {
    Files.deleteIfExists(Instance.updateManifest());
    Record.forget();
    Platform.collectGarbage();
    say("cleaned up");
    return DONE;
  }

  private static Path manifest() {
    Path update = Instance.updateManifest();
    return Files.isRegularFile(update) ? update : Instance.installManifest();
  }

  /** The director's arguments for what the profile lacks or has too much. */
  private static List<String> changes(List<Feature> features) {
    List<String> changes = new ArrayList<>();
    for (Feature feature : features) {
      boolean missing = feature.install();
      for (String version : InstalledFeatures.versionsOf(feature)) {
        if (feature.install() && version.equals(feature.version())) {
          missing = false;
        } else {
          changes.addAll(List.of("-uninstallIU", feature.unit() + "/" + version));
        }
      }
      if (missing) {
        changes.addAll(List.of("-installIU", feature.unit() + "/" + feature.version()));
      }
    }
    return changes;
  }

  private static int direct(List<String> changes, List<Feature> features) throws Exception {
    List<String> arguments = new ArrayList<>();
    String sites = Sites.forFeatures(features);
    if (!sites.isEmpty()) arguments.addAll(List.of("-repository", sites));
    arguments.addAll(changes);
    say("director " + String.join(" ", arguments));
    return Platform.direct(arguments.toArray(new String[0]));
  }

  private static void carryOver(List<Feature> features) throws IOException {
    FeatureManifest installed = FeatureManifest.read(Instance.installManifest());
    for (Feature feature : features) installed.carryOver(feature);
    installed.save();
  }

  private static Integer unusable(String reason) {
    say(reason);
    return UNUSABLE;
  }

  private static void say(String text) {
    System.out.println("provisioning: " + text);
  }
}
