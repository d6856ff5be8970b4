package com.kiv.rcp.base;

import java.util.Optional;

/** Options of an application's command line. */
final class Arguments {
  private Arguments() {}

  /** What follows {@code option}; empty when the option is missing or the last word. */
  static Optional<String> valueOf(String option, String[] arguments) {
    for (int i = 0; i + 1 < arguments.length; ++i) {
      if (arguments[i].equals(option)) return Optional.of(arguments[i + 1]);
    }
    return Optional.empty();
  }
}
