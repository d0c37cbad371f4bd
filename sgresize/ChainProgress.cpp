#include "sgresize/ChainProgress.h"

namespace Kelvane {

ChainProgress::ChainProgress(const Lodex::CString& title, long commands)
    : shown_(Lodex::ProgressTracer::set_sink(this)), commands_(commands)
{
    if (shown_)
        shown_->begin(title);
}

ChainProgress::~ChainProgress()
{
    Lodex::ProgressTracer::set_sink(shown_);
    if (shown_)
        shown_->end();
}

bool ChainProgress::progress(double done)
{
    if (!cancelled_ && shown_)
        cancelled_ = !shown_->progress((static_cast<double>(command_) + done) / static_cast<double>(commands_));
    return !cancelled_;
}

} // namespace Kelvane
