#include "Progress.h"

namespace material_graph
{

namespace
{

constexpr std::chrono::milliseconds interval(100);
constexpr char const* clearLine = "\r\033[K";

} // namespace

Progress::Progress(std::ostream* terminal, Clock::duration patience)
    : terminal_(terminal), patience_(patience)
{}

void Progress::start(std::string const& label, std::size_t total)
{
    finish();
    label_ = label;
    total_ = total;
    done_ = 0;
    nextShow_ = Clock::now() + patience_;
}

void Progress::step()
{
    ++done_;
    if (terminal_ != nullptr && Clock::now() >= nextShow_) show();
}

void Progress::finish()
{
    if (shown_) *terminal_ << clearLine << std::flush;
    shown_ = false;
}

void Progress::show()
{
    *terminal_ << clearLine << label_ << " " << done_;
    if (total_ != 0) *terminal_ << " of " << total_;
    *terminal_ << std::flush;
    shown_ = true;
    nextShow_ = Clock::now() + interval;
}

} // namespace material_graph
