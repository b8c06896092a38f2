# Takes out the paragraphs that hold nothing, which the maker of the pages leaves and checkers of manuals tell; one at the
# end of an indented part begins behind it.
/^\.P$/ { held = 1; next }
/^\.RE$/ { print; next }
held { if (!/^\.S[HS]/ && !after_heading && !/^\.TS/) print ".P"; held = 0 }
{ print; after_heading = /^\.(SH|SS|TH)/ }
