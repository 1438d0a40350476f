#pragma once
// File names as the program stores them: "[apppath]" and "[userpath]" stand
// for the application and per-user folders, so projects and scenes move
// between installations. Case is kept; "/" is the separator, and a "\"
// from a file written elsewhere becomes one.

#include <string>

// The two folders, without a trailing separator.
void SetAppPaths(const std::string &appPath, const std::string &userPath);
const std::string &AppPath();
const std::string &UserPath();

// Turns every "\" into "/".
std::string PathValue(const std::string &s);
// Replaces the macros (exact text) by the folders with a "/" behind them.
std::string Expand(const std::string &s);
// Replaces the application folder, then the per-user folder (each followed
// by "/"), by their macros.
std::string Contract(const std::string &s);
// The path as given if it exists; else, when one entry in its folder
// differs only in case, that entry; else the path as given. Files written on
// systems that ignore case name their files loosely.
std::string ResolvePath(const std::string &path);
// Joins two path parts with one "/".
std::string JoinPath(const std::string &a, const std::string &b);
