#include "Platform/Views/PopUpButtonCell.h"
#include "Platform/Views/PopUpMenu.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/QtTest.h"

#include <QScreen>
#include <QTimer>

namespace velloren {

using PopUpButtonCellTest = QtTest;

TEST_F(PopUpButtonCellTest, HangsItsMenuBesideTheButtonAndNeverUnderThePointer) {
    FakeWindowServer::install();
    QWidget button;
    PopUpMenu menu(&button);
    for (const char* title : {"", "Support", "Help Center", "Quit"})
        menu.addAction(QString::fromLatin1(title));
    PopUpButtonCell cell;
    cell.setPullsDown(true);
    cell.setPreferredEdge(RectEdge::MinY);
    cell.setMenu(&menu);
    std::set<bool> sides;
    for (int room = 0; room < 180; room += 3) {
        button.setGeometry(100, button.screen()->availableGeometry().bottom() - room - 22, 28, 22);
        button.show();
        QRect hung;
        QTimer::singleShot(0, &menu, [&] {
            hung = menu.geometry().marginsRemoved(menu.contentsMargins());
            menu.close();
        });
        cell.performClickWithFrame(button.rect(), button);
        EXPECT_FALSE(hung.intersects(button.geometry())) << room;
        sides.insert(hung.top() > button.geometry().bottom());
    }
    EXPECT_EQ(sides.size(), 2u) << "below where there is room for it, else above";
    SharedInstance<WindowServer>::reset();
}

} // namespace velloren
