#include "Companions/MainAppStandIn/DemonstrationStore.h"

#include "Companions/MainAppStandIn/MeetingDatabase.h"
#include "Services/Local/CurrentUserRecord.h"

namespace velloren {

void makeDemonstrationStore() {
    using namespace std::chrono_literals;
    const Date now = std::chrono::floor<std::chrono::minutes>(Date::clock::now());
    MeetingDatabase database(MeetingDatabase::usualPath());
    database.clear();
    database.add("demo-1", "Design review: what the first screen of the notes should tell", now + 35min);
    database.add("demo-2", "产品路线图讨论 🎉", now + 24h);
    database.add("demo-3", "اجتماع الفريق الأسبوعي", now + 48h);
    database.add("demo-4", "Retrospective", now + 72h);
    storeCurrentUser(currentUserFile(), {"7", "ada@velloren.example", true});
}

} // namespace velloren
