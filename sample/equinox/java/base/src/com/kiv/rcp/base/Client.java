package com.kiv.rcp.base;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Comparator;
import java.util.concurrent.Callable;
import org.eclipse.core.runtime.CoreException;
import org.eclipse.core.runtime.IConfigurationElement;
import org.eclipse.core.runtime.RegistryFactory;
import org.eclipse.equinox.app.IApplication;
import org.eclipse.equinox.app.IApplicationContext;
import org.osgi.framework.Bundle;
import org.osgi.framework.FrameworkUtil;

/**
 * The client: prepares its workspace, names the platform's bundles, lets every installed patch speak
 * and, with {@code -stay N}, stays up for N seconds.
 */
public final class Client implements IApplication {
  @Override
  public Object start(IApplicationContext context) throws Exception {
    String[] arguments = (String[]) context.getArguments().get(IApplicationContext.APPLICATION_ARGS);
    prepareWorkspace();
    nameBundles();
    runPatches();
    System.out.println("client is up");
    System.out.flush();
    Thread.sleep(1000L * Integer.parseInt(Arguments.valueOf("-stay", arguments).orElse("0")));
    return EXIT_OK;
  }

  @Override
  public void stop() {}

  /** The mark of a used workspace, with the install id of the instance that used it first. */
  private static void prepareWorkspace() throws IOException {
    Path settings = Instance.data().resolve(".config/rcpinstall.properties");
    if (Files.exists(settings)) return;
    Files.createDirectories(settings.getParent());
    String id = Instance.launcherProperties().getProperty("rcp.install.id", "");
    Files.writeString(settings, "rcp.install.id=" + id + "\n");
  }

  private static void nameBundles() {
    Bundle[] bundles = FrameworkUtil.getBundle(Client.class).getBundleContext().getBundles();
    Arrays.sort(bundles, Comparator.comparing(Bundle::getSymbolicName));
    for (Bundle bundle : bundles) {
      System.out.println("bundle " + bundle.getSymbolicName() + " " + bundle.getVersion());
    }
  }

  private static void runPatches() throws Exception {
    IConfigurationElement[] patches =
        RegistryFactory.getRegistry().getConfigurationElementsFor("com.kiv.rcp.base.patches");
    if (patches.length == 0) System.out.println("no patch is installed");
    for (IConfigurationElement patch : patches) {
      System.out.println("patch " + patch.getContributor().getName() + " says: " + answer(patch));
    }
  }

  private static Object answer(IConfigurationElement patch) throws Exception {
    try {
      return ((Callable<?>) patch.createExecutableExtension("class")).call();
    } catch (CoreException | ClassCastException broken) {
      return "cannot run: " + broken.getMessage();
    }
  }
}
