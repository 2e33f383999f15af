#include "UserStore.h"

#include "Output.h"
#include "Session.h"

using nivora::cs::UserCoordSystem;

void changeOwnSystems(const Session &session, const std::function<void(UserCoordSystem &)> &work)
{
    UserCoordSystem &store = session.userSystems();
    try {
        store.update([&work](UserCoordSystem &fresh) {
            work(fresh);
            return true;
        });
    } catch (const std::logic_error &) {
        if (store.readProblem().isEmpty())
            throw;
        throw Failure(store.readProblem());
    }
}
