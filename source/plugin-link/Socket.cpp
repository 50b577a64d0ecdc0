#include "plugin-link/Socket.h"

#include "plugin-link/WinsockInit.h"

namespace vorlek {

Socket::Socket() {
    WinsockInit();
}

Socket::Socket(SOCKET socket) : Handle(socket) {
    WinsockInit();
}

} // namespace vorlek
