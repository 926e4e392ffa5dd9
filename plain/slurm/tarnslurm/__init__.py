"""An export cut into tasks, submitted to Slurm as arrays of jobs, and put together by one more."""
