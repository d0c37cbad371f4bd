#pragma once

#include "lodex/project/Project.h"

#include <string>

namespace lodex {

class MainWindow;

/// How the camera stands and what each grid shows in it: place, exaggeration, projection, colours, slices, threshold.
class CamerasPart final : public ProjectPart {
public:
    explicit CamerasPart(MainWindow& window);
    ~CamerasPart() override;
    CamerasPart(const CamerasPart&) = delete;
    CamerasPart& operator=(const CamerasPart&) = delete;

    [[nodiscard]] std::string name() const override { return "cameras"; }
    [[nodiscard]] std::string save() const override;
    void restore(const std::string& text) override;

private:
    MainWindow& window_;
};

/// What is selected, which parts of the window are open, and where the section stands.
class WindowPart final : public ProjectPart {
public:
    explicit WindowPart(MainWindow& window);
    ~WindowPart() override;
    WindowPart(const WindowPart&) = delete;
    WindowPart& operator=(const WindowPart&) = delete;

    [[nodiscard]] std::string name() const override { return "window"; }
    [[nodiscard]] std::string save() const override;
    void restore(const std::string& text) override;

private:
    MainWindow& window_;
};

} // namespace lodex
