#pragma once

#include "Companions/MainAppStandIn/MeetingDatabase.h"
#include "Companions/MainAppStandIn/RequestLog.h"
#include "Services/Local/UploadingLock.h"

#include <QPushButton>
#include <QTreeWidget>
#include <QWidget>

#include <memory>

namespace velloren {

/// Shows what the main app was asked, and stands in for what its user would do. Main thread only.
class MainWindow final : public QWidget {
    Q_OBJECT

  public:
    MainWindow(RequestLog& log, MeetingDatabase& database);

  private:
    void addRequest(const std::string& request);
    void toggleLogin();
    void toggleUploading();
    void addMeeting();
    void showState();

    MeetingDatabase& database;
    QTreeWidget requests;
    QPushButton login;
    QPushButton uploading;
    std::unique_ptr<UploadingLock> uploadingLock;
};

} // namespace velloren
