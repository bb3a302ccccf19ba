# Plain comments to Doxygen's: the first block of a header is about the file, a comment behind code is about what stands
# before it, any other about what follows. Rows of code inside a comment (four blanks) stay code in Markdown.
1s|^// |/// \\file\n/// |
1s|^/\* |/** \\file\n * |
s|^\( *\)//\([^/]\)|\1///\2|
s|^\( *\)//$|\1///|
s|\([;,{(]\) *// |\1 ///< |
