#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QWidget>

/// The least that a Qt program with an icon in the tray can be: what the agent is measured against. A click
/// shows an empty grey window in the screen's upper right corner.
int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);

    QWidget window(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(236, 236, 236));
    window.setPalette(palette);
    const QRect screen = window.screen()->geometry();
    window.setGeometry(screen.right() - 330, screen.top() + 31, 320, 290);

    QPixmap picture(22, 22);
    picture.fill(Qt::black);
    QSystemTrayIcon icon{QIcon(picture)};
    QObject::connect(&icon, &QSystemTrayIcon::activated, &window,
                     [&window] { window.setVisible(!window.isVisible()); });
    icon.show();
    return QApplication::exec();
}
