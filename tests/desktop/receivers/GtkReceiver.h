// SPDX-License-Identifier: MIT
#pragma once

#include <gtk/gtk.h>

/// What differs between the two versions of GTK.
namespace receiver {

/// Initialises the toolkit.
void initialise();

/// Shows a window of this title with a menu bar and, below it, `content`, which gets the focus.
void showWindow(const char* title, GtkWidget* content);

}  // namespace receiver
