package com.kiv.rcp.base;

/**
 * One line of a provisioning manifest.
 *
 * @param url the site it comes from, {@code file:} and a plain path; empty when none is given
 * @param install false: it is to be removed
 */
record Feature(String id, String version, String url, boolean install) {
  /** The name of the installable unit that stands for the whole feature. */
  String unit() {
    return id + ".feature.group";
  }
}
