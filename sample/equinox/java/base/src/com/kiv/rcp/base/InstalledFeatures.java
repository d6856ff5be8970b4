package com.kiv.rcp.base;

import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import org.eclipse.equinox.p2.core.IProvisioningAgent;
import org.eclipse.equinox.p2.engine.IProfile;
import org.eclipse.equinox.p2.engine.IProfileRegistry;
import org.eclipse.equinox.p2.metadata.IInstallableUnit;
import org.eclipse.equinox.p2.query.QueryUtil;
import org.osgi.framework.BundleContext;
import org.osgi.framework.FrameworkUtil;

/** What the running profile says; asked anew each time. */
final class InstalledFeatures {
  private InstalledFeatures() {}

  static Set<String> versionsOf(Feature feature) {
    Set<String> versions = new TreeSet<>();
    for (IInstallableUnit unit :
        profile().query(QueryUtil.createIUQuery(feature.unit()), null).toUnmodifiableSet()) {
      versions.add(unit.getVersion().toString());
    }
    return versions;
  }

  /** Whether the profile is as the features want it. */
  static boolean agreeWith(List<Feature> features) {
    return features.stream()
        .allMatch(f -> versionsOf(f).equals(f.install() ? Set.of(f.version()) : Set.of()));
  }

  private static IProfile profile() {
    BundleContext context = FrameworkUtil.getBundle(InstalledFeatures.class).getBundleContext();
    IProvisioningAgent agent =
        context.getService(context.getServiceReference(IProvisioningAgent.class));
    return agent.getService(IProfileRegistry.class).getProfile(IProfileRegistry.SELF);
  }
}
