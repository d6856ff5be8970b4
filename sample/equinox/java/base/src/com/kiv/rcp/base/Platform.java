package com.kiv.rcp.base;

import java.util.Map;
import org.eclipse.core.runtime.CoreException;
import org.eclipse.core.runtime.IExtension;
import org.eclipse.core.runtime.RegistryFactory;
import org.eclipse.equinox.app.IApplication;
import org.eclipse.equinox.app.IApplicationContext;
import org.osgi.framework.Bundle;

/** Starts the platform's own applications in this process. */
final class Platform {
  private static final String COLLECTOR = "org.eclipse.equinox.p2.garbagecollector.application";
  private static final String DIRECTOR = "org.eclipse.equinox.p2.director";

  private Platform() {}

  /** The director's exit code; 0 when the profile has been changed as asked. */
  static int direct(String... arguments) throws Exception {
    return run(DIRECTOR, arguments) instanceof Integer code ? code : 0;
  }

  /** Deletes the plug-ins that neither the profile nor the running framework knows. */
  static void collectGarbage() throws Exception {
    run(COLLECTOR);
  }

  private static Object run(String application, String... arguments) throws Exception {
    return ((IApplication) create(application)).start(new Context(arguments));
  }

  private static Object create(String application) throws CoreException {
    IExtension extension =
        RegistryFactory.getRegistry()
            .getExtension("org.eclipse.core.runtime.applications", application);
    if (extension == null) throw new IllegalStateException("no application " + application);
    return extension.getConfigurationElements()[0]
        .getChildren("run")[0]
        .createExecutableExtension("class");
  }

  /** All that an application started from within another one is told. */
  private record Context(String[] arguments) implements IApplicationContext {
    @Override
    public Map<String, Object> getArguments() {
      return Map.of(APPLICATION_ARGS, arguments);
    }

    @Override
    public void applicationRunning() {}

    @Override
    public String getBrandingApplication() {
      return null;
    }

    @Override
    public String getBrandingName() {
      return null;
    }

    @Override
    public String getBrandingDescription() {
      return null;
    }

    @Override
    public String getBrandingId() {
      return null;
    }

    @Override
    public String getBrandingProperty(String key) {
      return null;
    }

    @Override
    public Bundle getBrandingBundle() {
      return null;
    }

    @Override
    public void setResult(Object result, IApplication application) {}
  }
}
