// The series that come with the program, to be tried out where nothing can be lost.
#pragma once

#include <QString>

class QWidget;

namespace veltrac {

// Where they were installed, or an empty text where they were not.
QString exampleDirectory();

struct ExampleCopies
{
    QString directory;  // that holds them now; empty where the user gave up or a box told of a failure
    int copied = 0;
    int kept = 0;  // were there already, and were left as they are
};

// Asks for a folder and copies the examples into a new one inside it, "Veltrac examples".
ExampleCopies copyExamples(QWidget* window);

}  // namespace veltrac
