#pragma once

#include <QImage>
#include <QOpenGLWidget>

#include <vtkNew.h>

#include <functional>

class vtkGenericOpenGLRenderWindow;
class vtkGenericRenderWindowInteractor;
class vtkRenderer;

namespace lodex {

/// Draws a renderer's scene in a widget.
class CameraCanvas : public QOpenGLWidget {
    Q_OBJECT

public:
    /// `prepare` is called before each picture with its size in device pixels; the context is current then.
    CameraCanvas(vtkRenderer& renderer, std::function<void(const QSize&)> prepare, QWidget* parent = nullptr);
    ~CameraCanvas() override;

    /// Asks for a picture soon; many calls make one picture.
    void request();
    /// The scene in any size, without what other widgets draw over it; null when there is no drawing context or the
    /// size is beyond what it can do.
    [[nodiscard]] QImage picture(const QSize& size);

Q_SIGNALS:
    void drawn();

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;

private:
    void make_current();
    void release();

    vtkRenderer& renderer_;
    std::function<void(const QSize&)> prepare_;
    vtkNew<vtkGenericOpenGLRenderWindow> window_;
    vtkNew<vtkGenericRenderWindowInteractor> interactor_;
    QMetaObject::Connection context_gone_;
};

} // namespace lodex
