#pragma once
#include "stand-ins/outlook/Object.h"
#include "stand-ins/outlook/Store.h"

namespace stand_ins {

/// The saved items of a folder, as they are at each call.
class Items : public Object {
public:
    Items(std::shared_ptr<Session> session, FolderPath folder);

    long Count() const;
    /// index from 1. Failure: as of an item that is not there.
    DispatchPtr At(long index);

private:
    FolderPath folder_;
};

} // namespace stand_ins
