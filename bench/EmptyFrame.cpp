// A frame with two empty child windows, and nothing else: the baseline for the start and the memory.
//
//     EmptyFrame ADDRESS PORT titled|untitled
//
// Listens on the port once the windows have been painted. With titles it needs a font, as any frame does;
// without them nothing of a font is ever loaded. Bare sockets, so that no library comes in for that.

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
#include <string_view>

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

void ShowFrame(QMainWindow& frame, bool titled) {
  auto* area = new QMdiArea(&frame);
  frame.setCentralWidget(area);
  frame.resize(1024, 720);
  if (titled) frame.setWindowTitle(QStringLiteral("Frame"));
  frame.show();
  for (const char* title : {"Feed", "History"}) {
    QMdiSubWindow* window = area->addSubWindow(new QWidget);
    if (titled) window->setWindowTitle(QLatin1String(title));
    window->resize(460, 300);
    window->show();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc < 4) return 2;
  const bool titled = std::string_view(argv[3]) == "titled";
  QMainWindow frame;
  QTimer::singleShot(0, &application, [&] {
    ShowFrame(frame, titled);
    QCoreApplication::processEvents();
    if (!Listen(argv[1], argv[2])) std::exit(1);
  });
  return QApplication::exec();
}
