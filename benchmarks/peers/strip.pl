# strip.pl FILE: removes the managed blocks and safely replaces the file with the new text.
my ($file) = @ARGV;
open my $in, '<', $file or die "$file: $!";
my ($mode, $size) = (stat $in)[2, 7];
sysread($in, my $text, $size) // die "$file: $!";
close $in;
$text =~ s/^# ---ZET_BEGIN---.*?^# ----ZET_END----.*?\n//msg;
open my $out, '>', "$file.tmp" or die "$file.tmp: $!";
(syswrite($out, $text) // 0) == length $text or die "$file.tmp: $!";
chmod $mode & 07777, $out;
close $out or die "$file.tmp: $!";
rename "$file.tmp", $file or die "$file: $!";
