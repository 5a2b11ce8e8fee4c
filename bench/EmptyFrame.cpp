// A frame with two empty child windows, and nothing else: the baseline for the start and the memory.
//
//     EmptyFrame ADDRESS PORT
//
// Listens on the port once the windows are shown. Bare sockets, so that no library comes in for that.

#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdlib>

namespace {

bool Listen(const char* address, const char* port) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
  ::inet_pton(AF_INET, address, &place.sin_addr);
  return ::bind(listener, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 &&
         ::listen(listener, 5) == 0;
}

void ShowFrame(QMainWindow& frame) {
  auto* area = new QMdiArea(&frame);
  frame.setCentralWidget(area);
  frame.resize(1024, 720);
  frame.show();
  for (int i = 0; i < 2; ++i) {
    QMdiSubWindow* window = area->addSubWindow(new QWidget);
    window->resize(460, 600);
    window->show();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc < 3) return 2;
  QMainWindow frame;
  QTimer::singleShot(0, &application, [&] {
    ShowFrame(frame);
    if (!Listen(argv[1], argv[2])) std::exit(1);
  });
  return QApplication::exec();
}
