#include "Companions/MainAppStandIn/MainWindow.h"

#include "Services/Local/CurrentUserRecord.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTime>
#include <QUuid>

namespace velloren {

namespace {

constexpr int margin = 16;
constexpr auto nextMeetingIn = std::chrono::minutes(20);

QString descriptionOf(const std::string& request) {
    if (request == "create")
        return MainWindow::tr("Create a meeting");
    if (request == "fetch")
        return MainWindow::tr("List the meetings");
    return MainWindow::tr("Open a meeting");
}

} // namespace

MainWindow::MainWindow(RequestLog& log, MeetingDatabase& database) : database(database) {
    setWindowTitle(QStringLiteral("Velloren"));
    resize(560, 360);
    requests.setHeaderLabels({tr("Time"), tr("Request"), tr("Meeting"), tr("Identifier")});
    requests.setRootIsDecorated(false);
    requests.setUniformRowHeights(true);
    requests.header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    requests.header()->setSectionResizeMode(2, QHeaderView::Stretch);
    requests.header()->setStretchLastSection(false);

    auto* addition = new QPushButton(tr("Add a meeting"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(&login);
    buttons->addWidget(&uploading);
    buttons->addStretch();
    buttons->addWidget(addition);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin / 2);
    layout->addWidget(new QLabel(tr("What the menu agent asked for:")));
    layout->addWidget(&requests);
    layout->addLayout(buttons);

    connect(&login, &QPushButton::clicked, this, &MainWindow::toggleLogin);
    connect(&uploading, &QPushButton::clicked, this, &MainWindow::toggleUploading);
    connect(addition, &QPushButton::clicked, this, &MainWindow::addMeeting);
    log.onRequest = [this](const std::string& request) { addRequest(request); };
    showState();
}

void MainWindow::addRequest(const std::string& request) {
    const std::string open = "open ";
    const std::string id = request.starts_with(open) ? request.substr(open.size()) : std::string();
    const QString title = id.empty() ? QString() : QString::fromStdString(database.titleOf(id));
    auto* item = new QTreeWidgetItem({QTime::currentTime().toString(Qt::ISODate), descriptionOf(request),
                                      title, QString::fromStdString(id)});
    requests.addTopLevelItem(item);
    requests.scrollToItem(item);
}

void MainWindow::toggleLogin() {
    auto user =
        readCurrentUser(currentUserFile()).value_or(CurrentUserRecord{"7", "ada@velloren.example", false});
    user.loggedIn = !user.loggedIn;
    storeCurrentUser(currentUserFile(), user);
    showState();
}

void MainWindow::toggleUploading() {
    uploadingLock = uploadingLock ? nullptr : UploadingLock::acquire();
    showState();
}

void MainWindow::addMeeting() {
    const Date now = std::chrono::floor<std::chrono::minutes>(Date::clock::now());
    database.add(QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(),
                 tr("A meeting just added").toStdString(), now + nextMeetingIn);
}

void MainWindow::showState() {
    const auto user = readCurrentUser(currentUserFile());
    login.setText(user && user->loggedIn ? tr("Log out") : tr("Log in"));
    uploading.setText(uploadingLock ? tr("End uploading") : tr("Start uploading"));
}

} // namespace velloren
