#pragma once
#include "stand-ins/outlook/Object.h"
#include "stand-ins/outlook/Store.h"

namespace stand_ins {

/// The stores, for an empty path, or the sub-folders of a folder, as they were when the collection was taken.
class Folders : public Object {
public:
    Folders(std::shared_ptr<Session> session, const FolderPath& parent);

    long Count() const { return static_cast<long>(folders_.size()); }
    /// index from 1; null beyond the end.
    DispatchPtr At(long index);
    DispatchPtr Next() { return At(++position_); }
    DispatchPtr First() {
        position_ = 0;
        return Next();
    }
    /// By number, or by name without regard to case. Failure: as of a folder that is not there.
    DispatchPtr Item(const Arguments& arguments);

private:
    std::vector<FolderPath> folders_;
    long position_ = 0;
};

} // namespace stand_ins
