# SPDX-License-Identifier: MIT
# In place of Qt's own, which looks for a framework of macOS.
add_library(WrapOpenGL::WrapOpenGL INTERFACE IMPORTED)
set(WrapOpenGL_FOUND TRUE)
