#include <Lodex/gviews/Picking.h>

#include <lodex/utils/Immortal.h>

#include <algorithm>
#include <vector>

namespace Lodex {

namespace {

class ToolBox : public GraphicLib {
public:
    void set_tool(CameraToolAction* tool) override
    {
        if (tool == tool_.get())
            return;
        // The former tool may die here; it and the observers already see the new one.
        const Ref<CameraToolAction> former = tool_;
        tool_ = tool;
        const std::vector<ToolObserver*> observers = observers_; // an observer may take itself or another out
        for (ToolObserver* observer : observers) {
            if (std::ranges::find(observers_, observer) != observers_.end())
                observer->tool_changed(tool_.get());
        }
    }

    void reset_tool() override { set_tool(nullptr); }

    [[nodiscard]] CameraToolAction* tool() const override { return tool_.get(); }
    [[nodiscard]] const GraphicSelection* selection() const override { return selection_; }

    void pick(const GraphicSelection* selection) override
    {
        // The selection ends with the call, whatever the tool does.
        struct Restore {
            const GraphicSelection*& place;
            const GraphicSelection* former;
            ~Restore() { place = former; }
        } restore{selection_, selection_};
        selection_ = selection;
        const Ref<CameraToolAction> tool = tool_; // a one-shot tool resets itself
        if (tool)
            tool->on_pick();
    }

    void attach(ToolObserver* observer) override
    {
        if (observer && std::ranges::find(observers_, observer) == observers_.end())
            observers_.push_back(observer);
    }

    void detach(ToolObserver* observer) override { std::erase(observers_, observer); }

private:
    Ref<CameraToolAction> tool_;
    const GraphicSelection* selection_ = nullptr;
    std::vector<ToolObserver*> observers_;
};

} // namespace

GraphicLib* GraphicLib::instance()
{
    // Never destroyed: a tool that is current at exit may come from a plug-in that is gone by then.
    static lodex::Immortal<ToolBox> library;
    return &library.get();
}

void CameraToolAction::execute()
{
    GraphicLib::instance()->set_tool(this);
}

} // namespace Lodex
