# A Homebrew formula for those who develop with the library on one Mac. What is sent to users is made
# by make-package. The archive lies wherever releases are kept:
#
#   export HOMEBREW_HOTFIX_ARCHIVE=file:///path/hotfix-installer-1.0.0.tar.gz
#   brew tap-new --no-git local/hotfix
#   cp packaging/macos/hotfix-installer.rb "$(brew --repository local/hotfix)/Formula/"
#   brew install local/hotfix/hotfix-installer
class HotfixInstaller < Formula
  desc "Installs a hotfix package into one instance of an Eclipse-based client platform"
  url ENV.fetch("HOMEBREW_HOTFIX_ARCHIVE", "file:///dev/null")
  version "1.0.0"

  depends_on "cmake" => :build
  depends_on "fmt" => :build
  depends_on "ninja" => :build
  depends_on "pkgconf" => :build
  depends_on "utf8proc"

  uses_from_macos "libxml2"

  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DHOTFIX_BUILD_SAMPLE=OFF",
           "-DHOTFIX_BUILD_TESTS=OFF", "-DHOTFIX_HARDENED=ON", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  test do
    assert_match "Usage: HotfixInstaller", shell_output("#{sbin}/HotfixInstaller 2>&1", 1)
  end
end
