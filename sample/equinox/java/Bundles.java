import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Enumeration;
import java.util.List;
import java.util.TreeSet;
import java.util.function.Predicate;
import java.util.jar.Attributes;
import java.util.jar.JarEntry;
import java.util.jar.JarFile;
import java.util.jar.JarOutputStream;
import java.util.jar.Manifest;
import java.util.stream.Collectors;

/**
 * Lays Debian's jars out as a folder of OSGi bundles: {@code Bundles <jars> <bundles> <tools>}.
 *
 * <p>A jar that is a bundle is copied unchanged under the name {@code <symbolic name>_<version>.jar}.
 * Packages that p2 needs and that no Debian bundle offers are wrapped: two from the OSGi compendium,
 * and the two Bouncy Castle jars, whose manifests say nothing about bundles. What only publishing
 * needs goes into {@code <tools>}.
 */
public final class Bundles {
  private static final String[] PLATFORM = {
    "eclipse-osgi", "eclipse-osgi-compatibility-state", "equinox-launcher", "equinox-common",
    "equinox-registry", "equinox-preferences", "equinox-app", "equinox-security",
    "eclipse-core-jobs", "equinox-simpleconfigurator", "equinox-simpleconfigurator-manipulator",
    "equinox-frameworkadmin", "equinox-frameworkadmin-equinox", "equinox-p2-core",
    "equinox-p2-metadata", "equinox-p2-metadata-repository", "equinox-p2-artifact-repository",
    "equinox-p2-repository", "equinox-p2-jarprocessor", "equinox-p2-engine",
    "equinox-p2-director", "equinox-p2-director-app", "equinox-p2-garbagecollector",
    "equinox-p2-touchpoint-eclipse", "equinox-p2-touchpoint-natives", "org.ow2.sat4j.core",
    "org.ow2.sat4j.pb", "xz", "org.apache.felix.scr"
  };
  private static final String[] PUBLISHER = {"equinox-p2-publisher", "equinox-p2-publisher-eclipse"};

  public static void main(String[] arguments) throws IOException {
    Path jars = Path.of(arguments[0]);
    Path bundles = Files.createDirectories(Path.of(arguments[1]));
    Path tools = Files.createDirectories(Path.of(arguments[2]));

    for (String name : PLATFORM) copy(jars.resolve(name + ".jar"), bundles);
    for (String name : PUBLISHER) copy(jars.resolve(name + ".jar"), tools);

    Path compendium = jars.resolve("osgi.cmpn.jar");
    new Wrapping("org.osgi.util.promise", "1.1.1")
        .packages("org.osgi.util.promise", "1.1.1")
        .packages("org.osgi.util.function", "1.1.0")
        .write(compendium, bundles);
    // The preferences bundle requires a bundle of this name, not the package.
    new Wrapping("org.osgi.service.prefs", "1.1.2")
        .packages("org.osgi.service.prefs", "1.1.2")
        .write(compendium, bundles);
    new Wrapping("bcprov", "1.72.0").write(jars.resolve("bcprov.jar"), bundles);
    new Wrapping("bcpg", "1.72.0").requiring("bcprov").write(jars.resolve("bcpg.jar"), bundles);
  }

  private static void copy(Path jar, Path folder) throws IOException {
    Attributes headers;
    try (JarFile file = new JarFile(jar.toFile())) {
      headers = file.getManifest().getMainAttributes();
    }
    String name = headers.getValue("Bundle-SymbolicName").split(";")[0].trim();
    String version = headers.getValue("Bundle-Version").trim();
    Files.copy(jar, folder.resolve(name + "_" + version + ".jar"));
  }

  /** A bundle made of some or all packages of a plain jar. */
  private static final class Wrapping {
    private final String name;
    private final String version;
    private final List<String[]> packages = new ArrayList<>(); // name and version; none: all
    private String required;

    Wrapping(String name, String version) {
      this.name = name;
      this.version = version;
    }

    Wrapping packages(String packageName, String packageVersion) {
      packages.add(new String[] {packageName, packageVersion});
      return this;
    }

    Wrapping requiring(String bundle) {
      required = bundle;
      return this;
    }

    void write(Path jar, Path folder) throws IOException {
      try (JarFile file = new JarFile(jar.toFile())) {
        List<JarEntry> entries = entries(file, entry -> isWanted(packageOf(entry)));
        Path target = folder.resolve(name + "_" + version + ".jar");
        try (OutputStream out = Files.newOutputStream(target);
            JarOutputStream bundle = new JarOutputStream(out, manifest(entries))) {
          for (JarEntry entry : entries) {
            bundle.putNextEntry(new JarEntry(entry.getName()));
            try (InputStream content = file.getInputStream(entry)) {
              content.transferTo(bundle);
            }
            bundle.closeEntry();
          }
        }
      }
    }

    private boolean isWanted(String packageName) {
      return packages.isEmpty() || packages.stream().anyMatch(p -> p[0].equals(packageName));
    }

    private Manifest manifest(List<JarEntry> entries) {
      Manifest manifest = new Manifest();
      Attributes headers = manifest.getMainAttributes();
      headers.put(Attributes.Name.MANIFEST_VERSION, "1.0");
      headers.putValue("Bundle-ManifestVersion", "2");
      headers.putValue("Bundle-SymbolicName", name);
      headers.putValue("Bundle-Version", version);
      headers.putValue("Export-Package", exports(entries));
      if (required != null) headers.putValue("Require-Bundle", required);
      return manifest;
    }

    private String exports(List<JarEntry> entries) {
      if (!packages.isEmpty()) {
        return packages.stream()
            .map(p -> p[0] + ";version=\"" + p[1] + "\"")
            .collect(Collectors.joining(","));
      }
      return entries.stream()
          .filter(entry -> entry.getName().endsWith(".class"))
          .map(Bundles::packageOf)
          .collect(Collectors.toCollection(TreeSet::new))
          .stream()
          .map(packageName -> packageName + ";version=\"" + version + "\"")
          .collect(Collectors.joining(","));
    }
  }

  private static List<JarEntry> entries(JarFile file, Predicate<JarEntry> wanted) {
    List<JarEntry> result = new ArrayList<>();
    for (Enumeration<JarEntry> all = file.entries(); all.hasMoreElements(); ) {
      JarEntry entry = all.nextElement();
      boolean content = !entry.isDirectory() && !entry.getName().startsWith("META-INF/");
      if (content && wanted.test(entry)) result.add(entry);
    }
    return result;
  }

  private static String packageOf(JarEntry entry) {
    int slash = entry.getName().lastIndexOf('/');
    return slash < 0 ? "" : entry.getName().substring(0, slash).replace('/', '.');
  }
}
