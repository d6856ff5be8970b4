package com.kiv.rcp.base;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/** The sites that features come from, as the director wants them. */
final class Sites {
  private Sites() {}

  /**
   * @param list {@code file:} places separated by commas, each a plain path: blanks, commas and
   *     {@code ..} stand for themselves. A path that exists as a whole is not taken apart.
   */
  static Stream<String> of(String list) {
    if (list.isEmpty()) return Stream.empty();
    if (Files.exists(path(list))) return Stream.of(location(list));
    return Arrays.stream(list.split(",")).filter(site -> !site.isEmpty()).map(Sites::location);
  }

  /** The override for this run if there is one, else what the features name. */
  static String forFeatures(List<Feature> features) {
    String override = System.getProperty("provUpdateSiteListOverride", "");
    Stream<String> sites =
        override.isEmpty() ? features.stream().flatMap(f -> of(f.url())) : of(override);
    return sites.distinct().collect(Collectors.joining(","));
  }

  private static Path path(String site) {
    return Path.of(site.trim().replaceFirst("^file:", ""));
  }

  private static String location(String site) {
    String uri = path(site).toAbsolutePath().normalize().toUri().toString();
    return uri.replace(",", "%2C"); // the director splits its list at commas
  }
}
