#pragma once

#include "PrivateFolder.h"
#include "boardfiles/Finding.h"

#include <filesystem>
#include <string>
#include <vector>

// A copy of a board in which single values can be changed.
class ChangedBoard {
 public:
   ChangedBoard( const std::filesystem::path &board, std::filesystem::path drivers );

   // Puts a JSON text at a pointer; an empty one takes away what is there.
   void change( const std::string &file, const std::string &pointer,
                const std::string &json ) const;

   // What a check of the copy finds, each as textWithPointer() has it.
   std::vector<std::string> check() const;

   const TestSupport::PrivateFolder &folder() const { return folder_; }

 private:
   const TestSupport::PrivateFolder folder_;
   const std::filesystem::path drivers_;
};

// "FILE:POINTER: NAME: REASON": a finding with the place that a test can name.
std::string textWithPointer( const BoardFiles::Finding &finding );
std::vector<std::string> textsWithPointers( const BoardFiles::Findings &findings );

// A change of a board's files, and a part of the finding that must come of it.
struct Mutation {
   const char *name;
   const char *file;
   const char *pointer;
   const char *json; // empty: taken away
   const char *finding;
};
