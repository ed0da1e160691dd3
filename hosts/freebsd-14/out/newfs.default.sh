# A line of sizes for every partition; the agent reads the block size only.
printf '%s: 51200.0MB (104857600 sectors) block size 32768, fragment size 4096
	using 82 cylinder groups of 625.22MB, 20007 blks, 80128 inodes.
super-block backups (for fsck_ffs -b #) at:
 192, 1280640, 2561088, 3841536, 5121984, 6402432, 7682880, 8963328, 10243776, 11524224
' "$2"
