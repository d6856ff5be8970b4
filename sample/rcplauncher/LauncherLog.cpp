#include "LauncherLog.h"

#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iomanip>

namespace sample {

void LauncherLog::write(const std::string& text) const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::ofstream out(_file, std::ios::app);
  out << std::put_time(&local, "%Y-%m-%d %H:%M:%S") << " [" << getpid() << "] " << text << '\n';
}

}  // namespace sample
