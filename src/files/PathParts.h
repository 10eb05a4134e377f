#pragma once

#include "base/WideString.h"

// A path cut into drive, folder, name and extension. Both '\' and '/' end a
// folder. Made on the stack where a path is taken apart.
class PathParts {
public:
    // An empty path stands for the program's own file.
    explicit PathParts(const WideString& path);

    const WideString& GetDrive() const { return drive; }
    const WideString& GetDir() const { return dir; }
    const WideString& GetName() const { return name; }
    const WideString& GetExt() const { return ext; }
    WideString GetDriveDir() const { return drive + dir; }
    WideString GetDriveDirName() const { return drive + dir + name; }
    WideString GetWhole() const { return drive + dir + name + ext; }
    WideString GetNameExt() const { return name + ext; }
    bool HasExt(const WideString& wanted) const;

private:
    WideString drive;
    WideString dir;
    WideString name;
    WideString ext;
};

WideString GetFullPath(const WideString& path);
WideString RemoveTrailingBackslash(const WideString& path);
// Adds the platform's separator unless the path already ends in one.
WideString AddTrailingBackslash(const WideString& path);
WideString GetParentDir(const WideString& path);
WideString GetCurrentDir();
