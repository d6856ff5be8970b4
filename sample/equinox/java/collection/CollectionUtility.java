import java.io.IOException;
import java.io.OutputStream;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.time.LocalDateTime;
import java.time.format.DateTimeFormatter;
import java.util.HashMap;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;
import java.util.zip.ZipEntry;
import java.util.zip.ZipOutputStream;

/**
 * The platform's log collection: packs the log of an operation, the launcher's and the framework's
 * logs into {@code deploy/installHistory} of the rcp home in which this jar lies.
 *
 * <p>{@code -productName N -productVersion V -action A -workspace W -logLocation L -s}
 */
public final class CollectionUtility {
  private static final int START_TIME = 19; // in stat, behind the name: ticks since the boot
  private static final double TICKS = 100; // a second, in what the kernel shows
  private static final DateTimeFormatter STAMP = DateTimeFormatter.ofPattern("yyyyMMdd-HHmmss");

  private final Path rcpHome;
  private final Map<String, String> options = new HashMap<>();

  private CollectionUtility(Path rcpHome, String[] arguments) {
    this.rcpHome = rcpHome;
    for (int i = 0; i + 1 < arguments.length; i += 2) options.put(arguments[i], arguments[i + 1]);
  }

  public static void main(String[] arguments) throws Exception {
    Path jar =
        Path.of(
            CollectionUtility.class.getProtectionDomain().getCodeSource().getLocation().toURI());
    CollectionUtility utility = new CollectionUtility(jar.getParent(), arguments);
    utility.collect();
    utility.noteDuration();
  }

  /** In the launcher's log, counted from the start of this process. */
  private void noteDuration() throws IOException {
    double began = Double.parseDouble(field(Path.of("/proc/self/stat"), START_TIME)) / TICKS;
    double now = Double.parseDouble(field(Path.of("/proc/uptime"), 0));
    Files.writeString(
        launcherLog(),
        "collection: done after " + Math.round((now - began) * 1000) + " ms\n",
        StandardOpenOption.CREATE,
        StandardOpenOption.APPEND);
  }

  /** A field of the kernel's; behind the process's name in parentheses if there is one. */
  private static String field(Path file, int index) throws IOException {
    String line = Files.readString(file);
    return line.substring(line.lastIndexOf(')') + 1).trim().split(" ")[index];
  }

  private Path launcherLog() {
    return rcpHome.resolve("rcplauncher.log");
  }

  private void collect() throws IOException {
    Path history = Files.createDirectories(rcpHome.resolve("deploy/installHistory"));
    try (OutputStream out = createArchive(history);
        ZipOutputStream archive = new ZipOutputStream(out)) {
      for (Map.Entry<String, Path> log : logs().entrySet()) {
        if (!Files.isRegularFile(log.getValue())) continue;
        archive.putNextEntry(new ZipEntry(log.getKey()));
        Files.copy(log.getValue(), archive);
        archive.closeEntry();
      }
    }
  }

  /** Name in the archive and file. */
  private Map<String, Path> logs() throws IOException {
    Map<String, Path> logs = new LinkedHashMap<>();
    Path operation = Path.of(option("-logLocation"));
    logs.put(operation.getFileName().toString(), operation);
    logs.put("rcplauncher.log", launcherLog());
    logs.put("workspace/.log", Path.of(option("-workspace"), ".metadata/.log"));
    Path configuration = rcpHome.resolve("eclipse/configuration");
    for (Path log : logsIn(configuration)) logs.put("configuration/" + log.getFileName(), log);
    return logs;
  }

  private static List<Path> logsIn(Path folder) throws IOException {
    if (!Files.isDirectory(folder)) return List.of();
    try (Stream<Path> files = Files.list(folder)) {
      return files.filter(file -> file.toString().endsWith(".log")).sorted().toList();
    }
  }

  private String option(String name) {
    return options.getOrDefault(name, "");
  }

  /** Two operations of one second get two archives. */
  private OutputStream createArchive(Path history) throws IOException {
    String name =
        String.join(
            "_",
            option("-productName"),
            option("-productVersion"),
            option("-action"),
            STAMP.format(LocalDateTime.now()));
    for (int counter = 1; ; ++counter) {
      Path archive = history.resolve(name + (counter == 1 ? "" : "_" + counter) + ".zip");
      try {
        return Files.newOutputStream(archive, StandardOpenOption.CREATE_NEW);
      } catch (FileAlreadyExistsException taken) {
        continue;
      }
    }
  }
}
