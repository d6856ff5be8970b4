package com.quillmere.hotfix;

import java.util.concurrent.Callable;
import org.osgi.framework.FrameworkUtil;

/** What the hotfix brings: the client calls it and prints its answer. */
public final class Patch implements Callable<String> {
  @Override
  public String call() {
    return "hotfix " + FrameworkUtil.getBundle(Patch.class).getVersion() + " is active";
  }
}
