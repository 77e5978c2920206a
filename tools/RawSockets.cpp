#include "tools/RawSockets.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace LspPingTool {

std::string rawSocketsRefused() {
  const int fd = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
  if (fd >= 0) {
    close(fd);
    return "";
  }
  const int errnum = errno;
  std::string why =
      std::string("cannot open raw sockets: ") + std::strerror(errnum);
  if (errnum == EPERM || errnum == EACCES) {
    why += " (raw sockets need root or CAP_NET_RAW)";
  }
  return why;
}

} // namespace LspPingTool
