#pragma once

#include <cstdint>

// A GDI+ brush of one ARGB colour. Deleting it deletes the native brush; a
// failing call stores its status. Used on the thread of the main window.
namespace platform {

struct BrushObject;

class SolidBrush {
public:
    explicit SolidBrush(std::uint32_t argb);
    ~SolidBrush();
    SolidBrush(const SolidBrush&) = delete;
    SolidBrush& operator=(const SolidBrush&) = delete;

    bool IsValid() const { return native != nullptr; }
    BrushObject* GetNative() const { return native; }

private:
    BrushObject* native = nullptr;
    int status = 0;
};

} // namespace platform
